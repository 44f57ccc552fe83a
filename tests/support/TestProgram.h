// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/TestScreen.h"

#include <QApplication>
#include <QtTest>

#include <map>
#include <string>
#include <type_traits>

/**
 * A program of several test classes. Its first argument names the one that it runs; the others are those of
 * Qt Test.
 */
namespace TestProgram {

using Function = int (*)(int argc, char **argv);

/// What the program does, by its first argument, which the function does not get.
inline std::map<std::string, Function> &functions()
{
    static std::map<std::string, Function> functions;
    return functions;
}

} // namespace TestProgram

/// What the program does in another process, which a test starts with this name as first argument.
struct TestProcess
{
    TestProcess(const char *name, TestProgram::Function function)
    {
        TestProgram::functions().emplace(name, function);
    }
};

/// Adds a test class to the program, with the application that it needs. One object for each class.
template <typename Test, typename Application = QCoreApplication>
struct TestClass
{
    TestClass() { TestProgram::functions().emplace(Test::staticMetaObject.className(), run); }

    // What the main function that Qt Test has for a single class does.
    static int run(int argc, char **argv)
    {
        QTest::Internal::callInitMain<Test>();
        const Application application(argc, argv);
        if constexpr (std::is_same_v<Application, QApplication>) {
            if (QGuiApplication::screens().size() == 1) {
                setScreenSize({1920, 1080});
            }
        }
        QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
        Test test;
        return QTest::qExec(&test, argc, argv);
    }
};
