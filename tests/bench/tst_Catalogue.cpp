#include "bench/core/Catalogue.h"
#include "bench/core/FirmwareImage.h"

#include <QSet>
#include <QtTest>

#include <algorithm>

using namespace bench;

class tst_Catalogue : public QObject
{
    Q_OBJECT

private slots:
    void holdsSixteenUsbModelsInOneBlock();
    void holdsFiveFireWireModels();
    void namesNothingTwice();
    void namesImages_data();
    void namesImages();
    void findsModelsByExactName();
    void knowsBridges();
};

void tst_Catalogue::holdsSixteenUsbModelsInOneBlock()
{
    QVector<int> ids;
    int unplugged = 0;
    int switched = 0;
    for (const Model &model : models()) {
        if (model.vendorId == 0x0E7A) {
            ids.append(model.productId);
            unplugged += model.restart == Restart::Unplug;
            switched += model.restart == Restart::PowerButton;
            QVERIFY2(model.chipset >= 1 && model.chipset <= 3, qPrintable(model.name));
        }
    }
    QCOMPARE(int(ids.size()), 16);
    QCOMPARE(unplugged, 11);
    QCOMPARE(switched, 5);
    const auto limits = std::minmax_element(ids.begin(), ids.end());
    QCOMPARE(*limits.second - *limits.first + 1, 46);
}

void tst_Catalogue::holdsFiveFireWireModels()
{
    int count = 0;
    for (const Model &model : models()) {
        if (model.isFireWire()) {
            ++count;
            QCOMPARE(int(model.vendorId), 0xC5E2);
            QVERIFY2(model.chipset == 5 || model.chipset == 6, qPrintable(model.name));
        }
    }
    QCOMPARE(count, 5);
}

void tst_Catalogue::namesNothingTwice()
{
    QSet<QString> seen;
    for (const Model &model : models()) {
        for (const QString &name : {model.name, model.imageName(), model.picture()}) {
            QVERIFY2(!seen.contains(name), qPrintable(name));
            seen.insert(name);
        }
    }
}

void tst_Catalogue::namesImages_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("image");
    QTest::addColumn<QString>("picture");
    QTest::newRow("one word") << "Pebble"
                              << "pebble.tfw"
                              << ":/firmwareUpdater/device/0x0E7A/1A20.png";
    QTest::newRow("blanks") << "Lamina Slim SSD"
                            << "lamina-slim-ssd.tfw"
                            << ":/firmwareUpdater/device/0x0E7A/1A2B.png";
    QTest::newRow("parentheses") << "Harbour (FireWire 800)"
                                 << "harbour-firewire-800.tfw"
                                 << ":/firmwareUpdater/device/0xC5E2/Harbour (FireWire 800).png";
    QTest::newRow("small letter") << "breakwater Mk II"
                                  << "breakwater-mk-ii.tfw"
                                  << ":/firmwareUpdater/device/0xC5E2/breakwater Mk II.png";
}

void tst_Catalogue::namesImages()
{
    QFETCH(QString, model);
    QTEST(findModel(model)->imageName(), "image");
    QTEST(findModel(model)->picture(), "picture");
}

void tst_Catalogue::findsModelsByExactName()
{
    QVERIFY(findModel("Skiff") != nullptr);
    QVERIFY(findModel("skiff") == nullptr);
    QVERIFY(findModel("") == nullptr);
}

void tst_Catalogue::knowsBridges()
{
    QCOMPARE(bridgeName(2), QString("Asm1051E"));
    QCOMPARE(bridgeName(4), QString("none"));
    QCOMPARE(bridgeName(-1), QString("none"));
}

QTEST_APPLESS_MAIN(tst_Catalogue)
#include "tst_Catalogue.moc"
