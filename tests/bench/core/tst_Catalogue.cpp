#include "bench/core/Catalogue.h"
#include "tests/bench/core/CoreTest.h"

#include <algorithm>
#include <set>
#include <tuple>

using namespace bench;

class tst_Catalogue : public QObject
{
    Q_OBJECT

private slots:
    void holdsSixteenUsbModelsInOneBlock();
    void holdsFiveFireWireModels();
    void listsModelsByBusProductIdAndBridge();
    void saysWhatModelsLookLike_data();
    void saysWhatModelsLookLike();
    void namesNothingTwice();
    void namesImages_data();
    void namesImages();
    void namesImagesByLettersAndDigits();
    void findsModelsByExactName();
    void knowsBridges();
    void writesIdsAndRestartsForAPerson();
};

void tst_Catalogue::holdsSixteenUsbModelsInOneBlock()
{
    std::vector<int> ids;
    int unplugged = 0;
    int switched = 0;
    for (const Model &model : models()) {
        if (model.vendorId == Vendor::Usb) {
            ids.push_back(model.productId);
            unplugged += model.restart() == Restart::Unplug;
            switched += model.restart() == Restart::PowerButton;
            QVERIFY2(Chipset::isUsbBridge(model.chipset), model.name);
        }
    }
    QCOMPARE(ids.size(), std::size_t(16));
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
            QCOMPARE(model.vendorId, Vendor::FireWire);
            QCOMPARE(model.productId, std::uint16_t(0));
            QVERIFY2(
                model.chipset == Chipset::OxSemiFireWire934 || model.chipset == Chipset::OxSemiFireWire944,
                model.name);
            QCOMPARE(model.restart(), Restart::NotNeeded);
        }
    }
    QCOMPARE(count, 5);
}

void tst_Catalogue::listsModelsByBusProductIdAndBridge()
{
    const auto place = [](const Model &model) {
        return std::tuple(model.isFireWire(), model.productId, model.isFireWire() ? model.chipset : 0);
    };
    QVERIFY(std::is_sorted(models().begin(), models().end(),
        [&](const Model &one, const Model &other) { return place(one) < place(other); }));
}

void tst_Catalogue::saysWhatModelsLookLike_data()
{
    using Names = std::vector<std::string>;
    QTest::addColumn<std::string>("body");
    QTest::addColumn<Names>("names");
    const auto add = [](const char *body, const Names &names) { QTest::newRow(body) << body + ""s << names; };
    add("rugged mobile", {"Pebble", "Pebble Mini", "Pebble USB3"});
    add("slim aluminium mobile", {"Lamina", "Lamina Slim", "Lamina Slim SSD"});
    add("small round-cornered mobile", {"Skiff", "Skiff Go"});
    add("desktop", {"Harbour", "Harbour Mini"});
    add("two-bay desktop", {"Harbour Duo"});
    add("desktop with power button", {"Bollard", "Bollard USB3"});
    add("two-bay with power button", {"Bollard Duo", "Breakwater", "Breakwater Max"});
    add("rugged mobile with FireWire ports", {"Pebble Triple"});
    add("desktop with FireWire ports", {"Harbour FireWire", "Harbour (FireWire 800)"});
    add("two-bay with FireWire ports", {"Bollard Duo (FireWire 800)", "breakwater Mk II"});
}

void tst_Catalogue::saysWhatModelsLookLike()
{
    QFETCH(std::string, body);
    std::vector<std::string> names;
    for (const Model &model : models()) {
        if (model.body == body) {
            names.emplace_back(model.name);
        }
    }
    QTEST(names, "names");
}

void tst_Catalogue::namesNothingTwice()
{
    std::set<std::string> seen;
    for (const Model &model : models()) {
        for (const std::string &name : {model.name + ""s, model.imageName(), model.picture()}) {
            QVERIFY2(seen.insert(name).second, name.c_str());
        }
    }
}

void tst_Catalogue::namesImages_data()
{
    QTest::addColumn<std::string>("model");
    QTest::addColumn<std::string>("image");
    QTest::addColumn<std::string>("picture");
    QTest::newRow("one word") << "Pebble"s
                              << "pebble.tfw"s
                              << ":/firmwareUpdater/device/0x0E7A/1A20.png"s;
    QTest::newRow("blanks") << "Lamina Slim SSD"s
                            << "lamina-slim-ssd.tfw"s
                            << ":/firmwareUpdater/device/0x0E7A/1A2B.png"s;
    QTest::newRow("parentheses") << "Harbour (FireWire 800)"s
                                 << "harbour-firewire-800.tfw"s
                                 << ":/firmwareUpdater/device/0xC5E2/Harbour (FireWire 800).png"s;
    QTest::newRow("small letter") << "breakwater Mk II"s
                                  << "breakwater-mk-ii.tfw"s
                                  << ":/firmwareUpdater/device/0xC5E2/breakwater Mk II.png"s;
}

void tst_Catalogue::namesImages()
{
    QFETCH(std::string, model);
    QTEST(findModel(model)->imageName(), "image");
    QTEST(findModel(model)->picture(), "picture");
}

void tst_Catalogue::namesImagesByLettersAndDigits()
{
    Model model = models().front();
    model.name = "(AZ) az~_09!";
    QCOMPARE(model.imageName(), "az-az-09.tfw"s);
}

void tst_Catalogue::findsModelsByExactName()
{
    QVERIFY(findModel("Skiff") != nullptr);
    QVERIFY(findModel("skiff") == nullptr);
    QVERIFY(findModel("") == nullptr);
}

void tst_Catalogue::knowsBridges()
{
    const std::vector<std::string> names = {
        "none", "Asm1051", "Asm1051E", "Asm1053", "none", "OxSemiFireWire934", "OxSemiFireWire944", "none"};
    for (std::size_t code = 0; code < names.size(); ++code) {
        QCOMPARE(std::string(bridgeName(static_cast<std::int32_t>(code))), names[code]);
    }
    QCOMPARE(std::string(bridgeName(-1)), "none"s);
}

void tst_Catalogue::writesIdsAndRestartsForAPerson()
{
    QCOMPARE(hexadecimalId(0), "0x0000"s);
    QCOMPARE(hexadecimalId(0xC5E2), "0xC5E2"s);
    QCOMPARE(std::string(restartText(Restart::Unplug)), "unplug"s);
    QCOMPARE(std::string(restartText(Restart::PowerButton)), "power button"s);
    QCOMPARE(std::string(restartText(Restart::NotNeeded)), "not needed"s);
    QCOMPARE(std::string(findModel("Pebble")->busName()), "USB"s);
    QCOMPARE(std::string(findModel("Pebble Triple")->busName()), "FireWire"s);
}

static const TestClass<tst_Catalogue> catalogueTests;

#include "tst_Catalogue.moc"
