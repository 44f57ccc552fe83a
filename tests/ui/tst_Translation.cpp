// SPDX-License-Identifier: MIT
#include "devices/DeviceTexts.h"
#include "tests/support/PageFixture.h"
#include "tests/support/TestProgram.h"
#include "tests/ui/BoxAnswerer.h"
#include "tests/ui/Looks.h"

#include <QRegularExpression>
#include <QTranslator>
#include <QtTest>

using DeviceRecords::usbDrive;

namespace {

/// "Finish" of DeviceLayout becomes "{DeviceLayout|Finish}". Keeps the phrases that it was asked for.
class MarkingTranslator : public QTranslator
{
public:
    MarkingTranslator() { QCoreApplication::installTranslator(this); }
    ~MarkingTranslator() override { QCoreApplication::removeTranslator(this); }

    bool isEmpty() const override { return false; }
    QString translate(
        const char *context, const char *source, const char *disambiguation, int /*number*/) const override
    {
        if (qstrcmp(context, "DeviceLayout") != 0 && qstrcmp(context, "MainWindow") != 0) {
            return {};
        }
        phrases.insert(source);
        return QString("{%1|%2%3}").arg(context, source, disambiguation);
    }

    mutable QSet<QString> phrases;
};

/// What a person reads or hears of a widget.
QStringList textsOf(const QWidget &window)
{
    QStringList texts;
    for (const QWidget *widget : window.findChildren<QWidget *>()) {
        texts << widget->accessibleName() << widget->accessibleDescription();
        texts << widget->property("text").toString();
    }
    return texts;
}

/// What of the texts is not translated, but for the values and the signs between the phrases.
QStringList untranslated(QStringList texts)
{
    static const QRegularExpression others(
        R"(\{(DeviceLayout|MainWindow)\|[^{}]*\}|Orvi: 1\.1\.6|Tarvo|Pebble|Harbour FireWire|1\.[23]|=>|</?b>|<br/>|[.:\s])");
    texts.replaceInStrings(others, "");
    texts.removeAll("");
    return texts;
}

/// The phrases that stand in tr() and QT_TRANSLATE_NOOP(), where lupdate finds them in the sources.
QSet<QString> phrasesInSources()
{
    static const QRegularExpression call(R"re((?:\btr\(|NOOP\("\w+",)\s*((?:"(?:[^"\\]|\\.)*"\s*)+)\))re");
    static const QRegularExpression join(R"("\s*")");
    QSet<QString> phrases;
    for (const char *path : {"ui/DeviceLayout.cpp", "ui/ButtonFaces.cpp", "ui/MainWindow.cpp",
             "devices/DeviceTexts.cpp", "companion/CompanionTexts.h"}) {
        QFile file(QString(PROGRAM_SOURCES "/") + path);
        if (!file.open(QIODevice::ReadOnly)) {
            qFatal("cannot read %s", path);
        }
        auto matches = call.globalMatch(QString::fromUtf8(file.readAll()));
        while (matches.hasNext()) {
            QString literal = matches.next().captured(1).trimmed();
            literal = literal.mid(1, literal.size() - 2).replace("\\\"", "\x01");
            phrases.insert(literal.remove(join).replace("\x01", "\""));
        }
    }
    return phrases;
}

} // namespace

class tst_Translation : public QObject
{
    Q_OBJECT

private slots:
    void everythingReadOfADriveIsTranslated();
    void everythingReadInALookIsTranslated_data();
    void everythingReadInALookIsTranslated();
    void everythingReadInTheCompanionBoxIsTranslated();
};

void tst_Translation::everythingReadOfADriveIsTranslated()
{
    const MarkingTranslator translator;
    PageReceiver receiver;
    DeviceInfo drive = usbDrive();
    for (drive.chipsetType = 0; drive.chipsetType <= 6; ++drive.chipsetType) {
        for (const int productId : {0x1A20, 0x1A3C}) {
            for (int statuses = 0; statuses < 9; ++statuses) {
                drive.productId = std::uint16_t(productId);
                drive.firmwareStatus = statuses / 3;
                drive.configurationStatus = statuses % 3;
                const DeviceLayout page(&receiver, drive);
                QCOMPARE(
                    untranslated(textsOf(page) << DeviceTexts::warning(drive) << DeviceTexts::success(drive)
                                               << DeviceTexts::failure(drive)),
                    QStringList());
            }
        }
    }
    QCOMPARE(translator.phrases - phrasesInSources(), QSet<QString>());
}

void tst_Translation::everythingReadInALookIsTranslated_data()
{
    addLookRows();
}

void tst_Translation::everythingReadInALookIsTranslated()
{
    QFETCH(QString, look);
    const MarkingTranslator translator;
    WindowFixture fixture;
    bringTo(fixture, look);
    QCOMPARE(untranslated(textsOf(fixture.window) << fixture.window.windowTitle()), QStringList());
    QCOMPARE(translator.phrases - phrasesInSources(), QSet<QString>());
}

void tst_Translation::everythingReadInTheCompanionBoxIsTranslated()
{
    const MarkingTranslator translator;
    QStringList texts;
    const WarnedWindow warned([&texts](QMessageBox &box) {
        texts << box.windowTitle() << box.text() << box.button(QMessageBox::Ok)->text();
    });
    QCOMPARE(texts.size(), 3);
    QCOMPARE(untranslated(texts), QStringList());
    QCOMPARE(translator.phrases - phrasesInSources(), QSet<QString>());
}

static const TestClass<tst_Translation, QApplication> translationTests;
#include "tst_Translation.moc"
