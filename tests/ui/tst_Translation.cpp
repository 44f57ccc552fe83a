#include "tests/support/DeviceRecords.h"
#include "tests/support/PageFixture.h"
#include "tests/support/TestProgram.h"
#include "tests/support/WindowTexts.h"
#include "tests/ui/BoxAnswerer.h"
#include "tests/ui/WindowFixture.h"

#include <QAbstractButton>
#include <QRegularExpression>
#include <QTranslator>
#include <QtTest>

#include <memory>

using DeviceRecords::usbDrive;

namespace {

/// What a page shows beside its phrases.
const QRegularExpression Values("Tarvo|Pebble|1\\.2|1\\.3|=>|</?b>|\\s");
/// Every phrase that a person reads, by its context.
const QStringList DevicePagePhrases = {"Update Firmware and Configuration", "Update Firmware",
    "Update Configuration", "Close", "Update", "Cancel", "Finish", "(firmware version:", ")",
    "Unknown firmware version !", "Device not supported !", "Firmware: Update required!",
    "Firmware: Up to date.", "Firmware: Unknown status!", "Configuration: Update required!",
    "Configuration: Up to date.", "Configuration: Unknown status!", "To update your device, press ",
    "\"Update\"", " button.", "To update later, press ", "\"Cancel\"", "You are about to update your Tarvo ",
    " firmware and configuration. (\"", " firmware. (\"", "\" => \"", "\")", " configuration.",
    "DO NOT disconnect the device during the firmware update.",
    "Doing so may cause irreparable harm to your data and/or disk.", "Your Tarvo ",
    " has been successfully updated.", "Please unplug and replug your Tarvo ",
    "Please use the power button on your Tarvo ", " hard drive to power off and power on the device.",
    "Your drive is now ready for use.", "Error while updating your Tarvo ", " device. Please retry."};
constexpr const char *CompanionWarning =
    "Tarvo Quaydesk is installed on this computer. Please Uninstall Tarvo "
    "Quaydesk before using Tarvo Firmware Updater.";
const QStringList WindowPhrases = {"Tarvo Firmware Updater", "No compatible Tarvo device were found.",
    "Please plug a compatible Tarvo device.", "Tarvo Quaydesk installed and running", CompanionWarning, "Ok"};

/// "Finish" of DeviceLayout becomes "{DeviceLayout|Finish}".
class MarkingTranslator : public QTranslator
{
public:
    MarkingTranslator() { QCoreApplication::installTranslator(this); }
    ~MarkingTranslator() override { QCoreApplication::removeTranslator(this); }

    bool isEmpty() const override { return false; }
    QString translate(
        const char *context, const char *source, const char *disambiguation, int /*number*/) const override
    {
        const QByteArray name = context;
        if (name != "DeviceLayout" && name != "MainWindow") {
            return {};
        }
        return QString("{%1|%2%3}").arg(name, source, disambiguation);
    }
};

QStringList marked(const QString &context, const QStringList &phrases)
{
    QStringList result;
    for (const QString &phrase : phrases) {
        result.append('{' + context + '|' + phrase + '}');
    }
    return result;
}

/// The marked phrases in a text, each once. `rest` gets what is not marked.
QStringList phrasesIn(const QString &text, QString *rest)
{
    static const QRegularExpression mark("\\{[^{}]*\\}");
    QStringList phrases;
    QRegularExpressionMatchIterator matches = mark.globalMatch(text);
    while (matches.hasNext()) {
        phrases.append(matches.next().captured());
    }
    *rest = QString(text).remove(mark);
    return phrases;
}

/// All texts of a page's labels and buttons, on screen or not.
QStringList textsOf(const QWidget &widget)
{
    QStringList texts;
    for (const QLabel *label : widget.findChildren<QLabel *>()) {
        texts.append(label->text());
    }
    for (const QAbstractButton *button : widget.findChildren<QAbstractButton *>()) {
        texts.append(button->text());
    }
    return texts;
}

/// Drives that between them show every text.
QList<DeviceInfo> everyDrive()
{
    QList<DeviceInfo> drives;
    for (const int chipsetType : {0, 1, 6}) {
        for (const int productId : {0x1A20, 0x1A3C}) {
            for (int statuses = 0; statuses < 9; ++statuses) {
                DeviceInfo drive = usbDrive();
                drive.chipsetType = chipsetType;
                drive.productId = std::uint16_t(productId);
                drive.firmwareStatus = statuses / 3;
                drive.configurationStatus = statuses % 3;
                drives.append(drive);
            }
        }
    }
    return drives;
}

/// The phrases that stand in tr() and QT_TRANSLATE_NOOP(), where lupdate finds them in a source.
QStringList phrasesInSource(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("cannot read %s", qPrintable(path));
    }
    const QString source = QString::fromUtf8(file.readAll());
    static const QRegularExpression call(R"((?:\btr\(|NOOP\("\w+",)\s*((?:"(?:[^"\\]|\\.)*"\s*)+)\))");
    static const QRegularExpression join(R"("\s*")");
    QStringList phrases;
    QRegularExpressionMatchIterator matches = call.globalMatch(source);
    while (matches.hasNext()) {
        QString literal = matches.next().captured(1).trimmed();
        literal = literal.mid(1, literal.size() - 2).replace("\\\"", "\x01");
        phrases.append(literal.remove(join).replace("\x01", "\""));
    }
    return phrases;
}

QStringList without(QStringList list, const QStringList &others)
{
    for (const QString &other : others) {
        list.removeAll(other);
    }
    return list;
}

/// What a page goes through; null for what it begins with.
constexpr StateFunction EachState[] = {nullptr, &DeviceLayout::deviceSelected, &DeviceLayout::updateInProgess,
    &DeviceLayout::updateSuccess, &DeviceLayout::restartDevice, &DeviceLayout::updateFailure};

/// The page of a drive in that state.
std::unique_ptr<DeviceLayout> pageOf(QObject *receiver, const DeviceInfo &drive, StateFunction stateFunction)
{
    auto page = std::make_unique<DeviceLayout>(receiver, drive);
    if (stateFunction != nullptr) {
        (page.get()->*stateFunction)();
    }
    return page;
}

} // namespace

class tst_Translation : public QObject
{
    Q_OBJECT

private slots:
    void everyPhraseOfAPageIsTranslated();
    void everyAccessibleNameOfAPageIsTranslated();
    void everyPhraseOfTheWindowIsTranslated();
    void sourcesNameEveryPhrase_data();
    void sourcesNameEveryPhrase();
};

void tst_Translation::everyPhraseOfAPageIsTranslated()
{
    const MarkingTranslator translator;
    const QStringList expected = marked("DeviceLayout", DevicePagePhrases);
    QStringList missing = expected;
    for (const DeviceInfo &drive : everyDrive()) {
        for (const StateFunction stateFunction : EachState) {
            PageReceiver receiver;
            for (const QString &text : textsOf(*pageOf(&receiver, drive, stateFunction))) {
                QString rest;
                const QStringList phrases = phrasesIn(text, &rest);
                QCOMPARE(rest.remove(Values), QString());
                QCOMPARE(without(phrases, expected), QStringList());
                missing = without(missing, phrases);
            }
        }
    }
    QCOMPARE(missing, QStringList());
}

void tst_Translation::everyAccessibleNameOfAPageIsTranslated()
{
    const MarkingTranslator translator;
    QStringList found;
    for (const DeviceInfo &drive : everyDrive()) {
        for (const StateFunction stateFunction : EachState) {
            PageReceiver receiver;
            const auto page = pageOf(&receiver, drive, stateFunction);
            for (const QWidget *widget : page->findChildren<QWidget *>()) {
                for (const QString &text : {widget->accessibleName(), widget->accessibleDescription()}) {
                    QString rest;
                    found += phrasesIn(text, &rest);
                    QCOMPARE(rest.remove(Values), QString());
                }
            }
        }
    }
    const QStringList expected = marked("DeviceLayout",
        {"Picture of the Tarvo Pebble",
            "Tarvo Pebble, serial number " + QString(usbDrive().serialNumber.c_str()), "Up to date",
            "Update required", "Unknown status", "Not supported", "Warning", "Error", "Updating the device",
            "Waiting for the device to be powered off and on"});
    QCOMPARE(without(expected, found), QStringList());
}

void tst_Translation::everyPhraseOfTheWindowIsTranslated()
{
    const MarkingTranslator translator;
    StandInTools tools;
    tools.installCompanion();
    const HeldPlatform platform;
    Arguments arguments;
    QStringList texts;
    BoxAnswerer answerer([&texts](QMessageBox &box) {
        texts << box.windowTitle() << box.text() << box.button(QMessageBox::Ok)->text();
        pressOk(box);
    });
    MainWindow window(arguments.count, arguments.vector);
    window.updateWindow();
    texts << window.windowTitle() << textsOf(window);
    QTRY_COMPARE(ScriptedPlatform::count("getTarvoDevice"), 1);

    QStringList phrases;
    QStringList rests;
    for (const QString &text : texts) {
        QString rest;
        phrases += phrasesIn(text, &rest);
        rests.append(rest);
    }
    phrases.sort();
    QStringList expected = marked("MainWindow", WindowPhrases);
    expected.sort();
    QCOMPARE(phrases, expected);
    QCOMPARE(without(rests, {""}), (QStringList{"<b></b><br/><br/><b></b>", VersionText}));
}

void tst_Translation::sourcesNameEveryPhrase_data()
{
    QTest::addColumn<QStringList>("sources");
    QTest::addColumn<QStringList>("phrases");
    QTest::newRow("page") << QStringList{"ui/DeviceLayout.cpp", "ui/ButtonFaces.cpp",
        "devices/DeviceTexts.cpp"}
                          << DevicePagePhrases;
    QTest::newRow("window") << QStringList{"ui/MainWindow.cpp", "companion/CompanionTexts.h"}
                            << WindowPhrases;
}

void tst_Translation::sourcesNameEveryPhrase()
{
    QFETCH(QStringList, sources);
    QFETCH(QStringList, phrases);
    QStringList found;
    for (const QString &source : sources) {
        found += phrasesInSource(PROGRAM_SOURCES "/" + source);
    }
    QCOMPARE(without(phrases, found), QStringList());
}

static const TestClass<tst_Translation, QApplication> translationTests;
#include "tst_Translation.moc"
