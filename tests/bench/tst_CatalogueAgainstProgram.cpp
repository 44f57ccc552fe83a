#include "bench/core/Catalogue.h"
#include "devices/DeviceInfo.h"
#include "tests/support/TestProgram.h"
#include "ui/DeviceLayout.h"

#include <QDirIterator>
#include <QImage>
#include <QLabel>
#include <QSet>
#include <QtTest>

#include <memory>

/// The catalogue, the pictures in the program's resources and the program's restart table name the same
/// drives.
class tst_CatalogueAgainstProgram : public QObject
{
    Q_OBJECT

private slots:
    void eachModelHasItsPicture();
    void eachPictureHasItsModel();
    void eachModelIsRestartedAsTheProgramSays();
    void noOtherProductIsRestarted();

private:
    static QString restartText(std::int32_t chipset, std::uint16_t productId);
};

QString tst_CatalogueAgainstProgram::restartText(std::int32_t chipset, std::uint16_t productId)
{
    DeviceInfo info;
    info.vendorId = Vendor::Usb;
    info.chipsetType = chipset;
    info.productId = productId;
    QObject receiver;
    DeviceLayout page(&receiver, info);
    return std::unique_ptr<QLabel>(page.messageSuccess())->text();
}

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

void tst_CatalogueAgainstProgram::eachModelIsRestartedAsTheProgramSays()
{
    for (const bench::Model &model : bench::models()) {
        const QString text = restartText(model.chipset, model.productId);
        QCOMPARE(text.contains("unplug and replug"), model.restart() == Restart::Unplug);
        QCOMPARE(text.contains("power button"), model.restart() == Restart::PowerButton);
    }
}

void tst_CatalogueAgainstProgram::noOtherProductIsRestarted()
{
    QSet<int> known;
    for (const bench::Model &model : bench::models()) {
        known.insert(model.productId);
    }
    for (int productId = 0x1A00; productId < 0x1A80; ++productId) {
        if (!known.contains(productId)) {
            QCOMPARE(restartText(Chipset::Asm1053, static_cast<std::uint16_t>(productId)), QString());
        }
    }
}

static const TestClass<tst_CatalogueAgainstProgram, QApplication> catalogueAgainstProgramTests;
#include "tst_CatalogueAgainstProgram.moc"
