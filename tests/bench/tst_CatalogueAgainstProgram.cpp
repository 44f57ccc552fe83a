// SPDX-License-Identifier: MIT
#include "bench/core/Catalogue.h"
#include "tests/support/TestProgram.h"

#include <QDirIterator>
#include <QImage>
#include <QSet>
#include <QtTest>

/// The catalogue and the pictures in the program's resources name the same drives.
class tst_CatalogueAgainstProgram : public QObject
{
    Q_OBJECT

private slots:
    void eachModelHasItsPicture();
    void eachPictureHasItsModel();
};

void tst_CatalogueAgainstProgram::eachModelHasItsPicture()
{
    for (const bench::Model &model : bench::models()) {
        const QImage picture(QString::fromStdString(model.picture()));
        QVERIFY2(!picture.isNull() && picture.width() == picture.height(), model.picture().c_str());
    }
}

void tst_CatalogueAgainstProgram::eachPictureHasItsModel()
{
    QSet<QString> known;
    for (const bench::Model &model : bench::models()) {
        known.insert(QString::fromStdString(model.picture()));
    }
    int count = 0;
    for (const char *folder : {":/firmwareUpdater/device/0x0E7A", ":/firmwareUpdater/device/0xC5E2"}) {
        QDirIterator walk(folder, QDir::Files);
        while (walk.hasNext()) {
            const QString picture = walk.next();
            QVERIFY2(known.contains(picture), qPrintable(picture));
            ++count;
        }
    }
    QCOMPARE(count, int(bench::models().size()));
}

static const TestClass<tst_CatalogueAgainstProgram, QApplication> catalogueAgainstProgramTests;
#include "tst_CatalogueAgainstProgram.moc"
