// SPDX-License-Identifier: MIT
#include "bench/core/Faults.h"

#include "tests/bench/TemporaryBench.h"
#include "tests/support/TestProgram.h"

using namespace bench;
using namespace std::string_literals;

/// The kinds of faults, their values, and the faults that are set on a drive.
class tst_Faults : public QObject
{
    Q_OBJECT

private slots:
    void eachKindHasItsRow();
    void eachExampleIsAValue();
    void refusesAValue();
    void aFaultReplacesOneOfItsKind();
    void isUsedUpWhenItIsSetForOnce();
    void isWrittenForAPerson();
};

namespace {

QStringList texts(const Faults &faults)
{
    QStringList texts;
    for (const Fault &fault : faults) {
        texts << QString::fromStdString(faultText(fault));
    }
    return texts;
}

} // namespace

void tst_Faults::eachKindHasItsRow()
{
    for (const FaultDescription &kind : faultDescriptions()) {
        QVERIFY(&describe(kind.kind) == &kind);
        QVERIFY(faultNamed(kind.name) == kind.kind);
        QCOMPARE(Json(kind.kind).dump(), '"' + std::string(kind.name) + '"');
    }
    QCOMPARE(refusal([] { faultNamed("smo\nke"); }),
        "there is no fault \"smo\\x0Ake\"; drive-bench fault --list shows them"s);
}

void tst_Faults::eachExampleIsAValue()
{
    for (const FaultDescription &kind : faultDescriptions()) {
        QCOMPARE(*kind.example == '\0', kind.value == FaultValue::None);
        QCOMPARE(*kind.valueName == '\0', kind.value == FaultValue::None);
        QCOMPARE(refusal([&kind] { check(Fault{kind.kind, kind.example, false}); }), ""s);
    }
}

void tst_Faults::refusesAValue()
{
    const std::pair<const char *, std::string> reasons[] = {{"slow-probe 0", ""}, {"slow-probe 60000", ""},
        {"slow-probe 60001", "slow-probe needs a whole number from 0 to 60000"},
        {"slow-probe", "slow-probe needs a whole number from 0 to 60000"}, {"flash-error 0x7FFFFFFF", ""},
        {"flash-error 2147483648", "flash-error needs a whole number from 0 to 2147483647"},
        {"flash-error -1", "flash-error needs a whole number from 0 to 2147483647"},
        {"unmount-returns -2147483648", ""},
        {"unmount-returns 1x", "unmount-returns needs a whole number from -2147483648 to 2147483647"},
        {"truncated-image", ""},
        {"truncated-image x", "truncated-image needs a whole number from 0 to 2147483647"},
        {"no-return 1", "no-return takes no value"}, {"new-serial \u00FF", ""},
        {"new-serial", "new-serial needs a text of characters up to U+00FF, with \\xNN for any byte"},
        {"new-serial \u0100", "new-serial needs a text of characters up to U+00FF, with \\xNN for any byte"},
        {"report productId", "report needs FIELD=VALUE, where FIELD is one of auxiliaryText1, productId, "},
        {"report colour=red", "report needs FIELD=VALUE, where FIELD is one of auxiliaryText1, productId, "}};
    for (const auto &[text, reason] : reasons) {
        const std::string refused = refusal([&, text = text] { check(fault(text)); });
        QCOMPARE(reason.empty() ? refused : refused.substr(0, reason.size()), reason);
    }
}

void tst_Faults::aFaultReplacesOneOfItsKind()
{
    Faults faults;
    for (const char *text : {"flash-error 1", "report modelName=a", "report productId=1", "flash-error 2",
             "report modelName=b=c"}) {
        set(&faults, fault(text));
    }
    QCOMPARE(texts(faults), QStringList({"report productId=1", "flash-error 2", "report modelName=b=c"}));
    QCOMPARE(faults.back().field() + " " + faults.back().fieldValue(), "modelName b=c"s);
    QCOMPARE(fault("report modelName=").fieldValue(), ""s);
    QCOMPARE(numberOf(faults, FaultKind::FlashError), std::int64_t(2));
    QCOMPARE(numberOf(faults, FaultKind::SlowProbe), std::int64_t(0));
    QVERIFY(remove(&faults, FaultKind::Report));
    QVERIFY(!remove(&faults, FaultKind::Report));
    QCOMPARE(texts(faults), QStringList("flash-error 2"));
}

void tst_Faults::isUsedUpWhenItIsSetForOnce()
{
    const Faults all{fault("flash-error 1", true), fault("verify-error", true), fault("pulled-out 1"),
        fault("report productId=1", true)};
    Faults faults = all;
    QVERIFY(!useUp(&faults, FaultKind::PulledOut));
    QVERIFY(useUp(&faults, FaultKind::FlashError));
    QCOMPARE(
        texts(faults), QStringList({"verify-error (once)", "pulled-out 1", "report productId=1 (once)"}));
    faults = all;
    QVERIFY(!useUp(&faults, UsedUpBy::PowerUp));
    QVERIFY(useUp(&faults, UsedUpBy::Striking));
    QCOMPARE(texts(faults), QStringList({"pulled-out 1", "report productId=1 (once)"}));
}

void tst_Faults::isWrittenForAPerson()
{
    QCOMPARE(faultText(fault("no-return")), "no-return"s);
    QCOMPARE(faultText(fault("report modelName=\u00E9\n", true)), "report modelName=\\xE9\\x0A (once)"s);
}

static const TestClass<tst_Faults> faultsTests;
#include "tst_Faults.moc"
