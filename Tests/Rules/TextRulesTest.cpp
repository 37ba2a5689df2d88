// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Rules/TextRules.h"

#include <gmock/gmock.h>

using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

using Rule = QStringList (*)(const SourceFile &);

void expectHeld(Rule rule)
{
    for (const SourceFile &file : SourceTree::files()) {
        for (const QString &violation : rule(file))
            ADD_FAILURE() << violation.toStdString();
    }
}

SourceFile file(const char *path, const char *text)
{
    return {QString::fromLatin1(path), QString::fromUtf8(text)};
}

} // namespace

TEST(TextRulesTest, TheTreeIsSeen)
{
    QStringList paths;
    for (const SourceFile &file : SourceTree::files())
        paths.append(file.path);
    for (const char *path :
         {"CMakeLists.txt", "cmake/QuenbyTargets.cmake", "Platform/PropertyLists/PropertyList.h",
          "Shared/Source/QNBShared.h", "Source/Model/QNBHierarchyItem.cpp", "Tests/main.cpp",
          "Tests/Rules/TextRulesTest.cpp", "scripts/test", ".ci/run"})
        EXPECT_TRUE(paths.contains(QLatin1String(path))) << path;
}

TEST(TextRulesTest, EveryFileBeginsWithItsTerms)
{
    expectHeld(TextRules::violationsOfHeader);
}
TEST(TextRulesTest, EveryHeaderIsGuarded)
{
    expectHeld(TextRules::violationsOfGuard);
}
TEST(TextRulesTest, NoFileIsTooLong)
{
    expectHeld(TextRules::violationsOfLength);
}
TEST(TextRulesTest, NothingIsLeftOver)
{
    expectHeld(TextRules::violationsOfLeftovers);
}
TEST(TextRulesTest, TestsWaitForConditions)
{
    expectHeld(TextRules::violationsOfWaiting);
}
TEST(TextRulesTest, TheEnvironmentIsLeftAlone)
{
    expectHeld(TextRules::violationsOfEnvironment);
}
TEST(TextRulesTest, NoTestIsSkipped)
{
    expectHeld(TextRules::violationsOfSkipping);
}

TEST(TextRulesTest, EverySourceIsCompiled)
{
    for (const QString &violation : TextRules::violationsOfListing(SourceTree::files()))
        ADD_FAILURE() << violation.toStdString();
}

TEST(TextRulesTest, MissingTermsAreCaught)
{
    EXPECT_THAT(TextRules::violationsOfHeader(file("Platform/A.h", "#pragma once\n")), SizeIs(1));
    EXPECT_THAT(
        TextRules::violationsOfHeader(file("Platform/A.cpp", "// SPDX-License-Identifier: MIT\nint a;\n")),
        SizeIs(1));
    EXPECT_THAT(TextRules::violationsOfHeader(file(
                    "cmake/A.cmake",
                    "// SPDX-FileCopyrightText: Quenby contributors\n// SPDX-License-Identifier: MIT\n")),
                SizeIs(1));
    EXPECT_THAT(TextRules::violationsOfHeader(file("Source/Info.plist.in", "<plist/>\n")), SizeIs(1));
    EXPECT_THAT(TextRules::violationsOfHeader(file("scripts/a", "#!/bin/sh\n")), SizeIs(1));
    EXPECT_THAT(
        TextRules::violationsOfHeader(file("scripts/a", "#!/bin/sh\n"
                                                        "# SPDX-FileCopyrightText: Quenby contributors\n"
                                                        "# SPDX-License-Identifier: MIT\n")),
        IsEmpty());
}

TEST(TextRulesTest, AMissingGuardIsCaught)
{
    EXPECT_THAT(TextRules::violationsOfGuard(file("Platform/A.h", "#ifndef A\n#define A\n#endif\n")),
                SizeIs(1));
    EXPECT_THAT(TextRules::violationsOfGuard(file("Platform/A.cpp", "int a;\n")), IsEmpty());
}

TEST(TextRulesTest, ALongFileIsCaught)
{
    const QString line = QStringLiteral("int a;\n");
    EXPECT_THAT(
        TextRules::violationsOfLength({QStringLiteral("A.cpp"), line.repeated(TextRules::longestFile)}),
        IsEmpty());
    EXPECT_THAT(
        TextRules::violationsOfLength({QStringLiteral("A.cpp"), line.repeated(TextRules::longestFile + 1)}),
        SizeIs(1));
}

TEST(TextRulesTest, LeftoversAreCaught)
{
    EXPECT_THAT(TextRules::violationsOfLeftovers(file("Source/A.cpp", "// TODO: more\n// FIXME\n")),
                SizeIs(2));
    EXPECT_THAT(TextRules::violationsOfLeftovers(file("Source/A.cpp", "QString aTODOlist;\n")), IsEmpty());
}

TEST(TextRulesTest, BareWaitsAreCaught)
{
    for (const char *wait :
         {"sleep(1);", "  usleep(1000);", "QThread::sleep(1);", "QThread::msleep(50);",
          "std::this_thread::sleep_for(1s);", "QTest::qWait(100);", "QTest::qSleep(100);", "time.sleep(0.5)",
          "sleep 2", "while (true)\n    QThread::msleep(5);", "while true; do\n    sleep 1"})
        EXPECT_THAT(TextRules::violationsOfWaiting(file("Tests/Host/A.cpp", wait)), SizeIs(1)) << wait;
    for (const char *wait :
         {"QTest::qWaitFor([] { return true; });", "spy.wait(1000);", "sleeper(1);",
          "while (!QFile::exists(path))\n    QThread::msleep(5);", "until test -s socket; do\n    sleep 0.1"})
        EXPECT_THAT(TextRules::violationsOfWaiting(file("Tests/Host/A.cpp", wait)), IsEmpty()) << wait;
    EXPECT_THAT(TextRules::violationsOfWaiting(file("Source/System/TQProcess.cpp", "usleep(250000);")),
                IsEmpty());
}

TEST(TextRulesTest, ChangesOfTheEnvironmentAreCaught)
{
    for (const char *change : {"qputenv(\"A\", b);", "qunsetenv(name);", "::setenv(\"A\", \"b\", 1);",
                               "unsetenv(\"A\");", "putenv(text);", "clearenv();"}) {
        EXPECT_THAT(TextRules::violationsOfEnvironment(file("Platform/A.cpp", change)), SizeIs(1)) << change;
        EXPECT_THAT(TextRules::violationsOfEnvironment(file("Tests/Platform/A.cpp", change)), IsEmpty());
    }
    EXPECT_THAT(
        TextRules::violationsOfEnvironment(file("Platform/A.cpp", "environment.insert(name, value);")),
        IsEmpty());
}

TEST(TextRulesTest, SkippedTestsAreCaught)
{
    for (const char *skip : {"GTEST_SKIP() << \"no bus\";", "QSKIP(\"no bus\");", "TEST(A, DISABLED_B)",
                             "self.skipTest('no bus')", "@unittest.skip('later')"})
        EXPECT_THAT(TextRules::violationsOfSkipping(file("Tests/Host/A.cpp", skip)), SizeIs(1)) << skip;
    EXPECT_THAT(TextRules::violationsOfSkipping(file("Tests/Host/A.cpp", "TEST(A, SkipsBlanks)")), IsEmpty());
}

TEST(TextRulesTest, AnUnlistedSourceIsCaught)
{
    const QList<SourceFile> files = {
        file("Platform/CMakeLists.txt", "add_library(a A.cpp sub/C.cpp NotB.cpp)"),
        file("Platform/A.cpp", ""), file("Platform/B.cpp", ""), file("Platform/sub/C.cpp", "")};
    const QStringList violations = TextRules::violationsOfListing(files);
    ASSERT_THAT(violations, SizeIs(1));
    EXPECT_TRUE(violations[0].startsWith(u"Platform/B.cpp"));
}
