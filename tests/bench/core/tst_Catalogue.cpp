#include "bench/core/Catalogue.h"

#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

#include <set>

using namespace bench;
using namespace std::string_literals;

/// The models of the maker's drives.
class tst_Catalogue : public QObject
{
    Q_OBJECT

private slots:
    void eachModelIsFoundByItsName();
    void namesPicturesAndImages_data();
    void namesPicturesAndImages();
    void eachBridgeHasAName();
};

void tst_Catalogue::eachModelIsFoundByItsName()
{
    std::set<std::string> images;
    for (const Model &model : models()) {
        QVERIFY(&modelNamed(model.name) == &model);
        QVERIFY2(images.insert(model.imageName()).second, model.imageName().c_str());
        QVERIFY(model.isFireWire() == (model.productId == 0));
        QVERIFY(bridgeName(model.chipset) != "none"s);
    }
    QCOMPARE(refusal([] { modelNamed("pebble\n"); }),
        "there is no model \"pebble\\x0A\"; drive-bench models lists them"s);
}

void tst_Catalogue::namesPicturesAndImages_data()
{
    QTest::addColumn<std::string>("model");
    QTest::addColumn<std::string>("bus");
    QTest::addColumn<std::string>("image");
    QTest::addColumn<std::string>("picture");
    QTest::newRow("USB") << "Lamina Slim SSD"s
                         << "USB"s
                         << "lamina-slim-ssd.tfw"s
                         << "0x0E7A/1A2B.png"s;
    QTest::newRow("FireWire") << "breakwater Mk II"s
                              << "FireWire"s
                              << "breakwater-mk-ii.tfw"s
                              << "0xC5E2/breakwater Mk II.png"s;
    QTest::newRow("brackets") << "Harbour (FireWire 800)"s
                              << "FireWire"s
                              << "harbour-firewire-800.tfw"s
                              << "0xC5E2/Harbour (FireWire 800).png"s;
}

void tst_Catalogue::namesPicturesAndImages()
{
    QFETCH(std::string, model);
    QFETCH(std::string, bus);
    QFETCH(std::string, image);
    QFETCH(std::string, picture);
    const Model &row = modelNamed(model);
    QCOMPARE(std::string(row.busName()), bus);
    QCOMPARE(row.imageName(), image);
    QCOMPARE(row.picture(), ":/firmwareUpdater/device/" + picture);
}

void tst_Catalogue::eachBridgeHasAName()
{
    const std::pair<std::int64_t, const char *> names[] = {{Chipset::Asm1051, "Asm1051"},
        {Chipset::Asm1051E, "Asm1051E"}, {Chipset::Asm1053, "Asm1053"},
        {Chipset::OxSemiFireWire934, "OxSemiFireWire934"}, {Chipset::OxSemiFireWire944, "OxSemiFireWire944"},
        {Chipset::NotSupported, "none"}, {Chipset::NoUpdater, "none"}, {-1, "none"},
        {(std::int64_t(1) << 32) + 1, "none"}};
    for (const auto &[chipset, name] : names) {
        QCOMPARE(QString(bridgeName(chipset)), QString(name));
    }
}

static const TestClass<tst_Catalogue> catalogueTests;
#include "tst_Catalogue.moc"
