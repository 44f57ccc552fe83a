#include "tests/bench/core/CoreTest.h"

/// Runs the test class that the first argument names, with the other arguments; without one, all of them.
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QStringList arguments = application.arguments();
    const bool isNamed = arguments.value(1).startsWith("tst_");
    const QByteArray name = isNamed ? arguments.takeAt(1).toUtf8() : QByteArray();
    int run = 0;
    int failed = 0;
    for (const auto &make : coreTests()) {
        const std::unique_ptr<QObject> test = make();
        if (!isNamed || name == test->metaObject()->className()) {
            failed += QTest::qExec(test.get(), arguments);
            ++run;
        }
    }
    return run > 0 && failed == 0 ? 0 : 1;
}
