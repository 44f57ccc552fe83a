// SPDX-License-Identifier: MIT
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

void tst_Catalogue::namesPicturesAndImages()
{
    const char *const names[][4] = {{"Lamina Slim SSD", "USB", "lamina-slim-ssd.tfw", "0x0E7A/1A2B.png"},
        {"breakwater Mk II", "FireWire", "breakwater-mk-ii.tfw", "0xC5E2/breakwater Mk II.png"},
        {"Harbour (FireWire 800)", "FireWire", "harbour-firewire-800.tfw",
            "0xC5E2/Harbour (FireWire 800).png"}};
    for (const auto &[name, bus, image, picture] : names) {
        const Model &model = modelNamed(name);
        QCOMPARE(model.busName(), bus);
        QCOMPARE(model.imageName(), image + ""s);
        QCOMPARE(model.picture(), ":/firmwareUpdater/device/"s + picture);
    }
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
