// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Rules/BinaryRules.h"

#include <QFile>
#include <QProcess>
#include <gmock/gmock.h>

using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

const QStringList products = QStringLiteral(QUENBY_PRODUCTS).split(u':');
const QStringList hardeningFlags = QStringLiteral(QUENBY_HARDENING_FLAGS).split(u':');

QString descriptionOf(const QString &path)
{
    QProcess readelf;
    readelf.start(QStringLiteral(QUENBY_READELF),
                  {QStringLiteral("-W"), QStringLiteral("--file-header"), QStringLiteral("--segments"),
                   QStringLiteral("--dynamic"), QStringLiteral("--dyn-syms"), path});
    EXPECT_TRUE(readelf.waitForFinished()) << qPrintable(readelf.errorString());
    EXPECT_EQ(readelf.exitCode(), 0) << readelf.readAllStandardError().constData();
    return QString::fromUtf8(readelf.readAllStandardOutput());
}

[[maybe_unused]] QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

/// Of a program with everything that the rules want.
const QString good = QStringLiteral(
    "  Type:                              DYN (Position-Independent Executable file)\n"
    "  GNU_STACK      0x000000 0x0000000000000000 0x0000000000000000 0x000000 0x000000 RW  0x10\n"
    "  GNU_RELRO      0x002d88 0x0000000000003d88 0x0000000000003d88 0x000278 0x000278 R   0x1\n"
    " 0x000000006ffffffb (FLAGS_1)            Flags: NOW PIE\n"
    "     3: 0000000000000000     0 FUNC    GLOBAL DEFAULT  UND __read_chk@GLIBC_2.4 (3)\n"
    "     4: 0000000000000000     0 FUNC    GLOBAL DEFAULT  UND __stack_chk_fail@GLIBC_2.4 (3)\n");

} // namespace

TEST(BinaryRulesTest, NothingIsFixedOrWritableThatNeedNotBe)
{
    for (const QString &product : products) {
        for (const QString &violation : BinaryRules::violationsOfLinking(descriptionOf(product)))
            ADD_FAILURE() << qPrintable(product) << ": " << qPrintable(violation);
    }
}

// A debug build is made to be looked into, and the sanitizers check more.
#if QUENBY_IS_HARDENED
TEST(BinaryRulesTest, EveryProductIsHardened)
{
    for (const QString &product : products) {
        QStringList violations = BinaryRules::violationsOfChecks(descriptionOf(product));
#ifdef __x86_64__
        violations += BinaryRules::violationsOfControlFlow(bytesOf(product));
#endif
        for (const QString &violation : std::as_const(violations))
            ADD_FAILURE() << qPrintable(product) << ": " << qPrintable(violation);
    }
}

TEST(BinaryRulesTest, EverySourceIsCompiledWithTheFlagsOfHardening)
{
    QStringList rooms;
    for (const char *room : {"Platform", "Keyboard", "Shared", "Source", "Toolkit", "Hosting", "Host",
                             "SystemSettings", "Helper", "ContextMenu"})
        rooms.append(QStringLiteral(QUENBY_SOURCE_TREE "/") + QString::fromLatin1(room) + u'/');
    const QByteArray commands = bytesOf(QStringLiteral(QUENBY_BUILD_TREE "/compile_commands.json"));
    for (const QString &violation : BinaryRules::violationsOfFlags(commands, rooms, hardeningFlags))
        ADD_FAILURE() << qPrintable(violation);
}
#endif

TEST(BinaryRulesTest, WhatIsGoodIsNoViolation)
{
    EXPECT_THAT(BinaryRules::violationsOfLinking(good), IsEmpty());
    EXPECT_THAT(BinaryRules::violationsOfChecks(good), IsEmpty());
    EXPECT_THAT(BinaryRules::violationsOfControlFlow(QByteArray("\xf3\x0f\x1e\xfa", 4).repeated(100)),
                IsEmpty());
}

TEST(BinaryRulesTest, EachMissingPartIsCaught)
{
    for (const char *line : {"DYN", "RW ", "GNU_RELRO", "NOW", "__read_chk", "__stack_chk_fail"}) {
        QString without = good;
        without.replace(QString::fromLatin1(line), QStringLiteral("other"));
        EXPECT_THAT(BinaryRules::violationsOfLinking(without) + BinaryRules::violationsOfChecks(without),
                    SizeIs(1))
            << line;
    }
    EXPECT_THAT(BinaryRules::violationsOfControlFlow(QByteArray(100, '\x90')), SizeIs(1));
}

TEST(BinaryRulesTest, ASourceWithoutAFlagIsCaught)
{
    const QByteArray commands = R"([{"file": "/s/Platform/A.cpp", "command": "c++ -fone -ftwo -c A.cpp"},
                                    {"file": "/s/Platform/B.cpp", "command": "c++ -fone -c B.cpp"},
                                    {"file": "/s/Tests/C.cpp", "command": "c++ -c C.cpp"}])";
    const QStringList flags = {QStringLiteral("-fone"), QStringLiteral("-ftwo")};
    EXPECT_THAT(BinaryRules::violationsOfFlags(commands, {QStringLiteral("/s/Platform/")}, flags), SizeIs(1));
    EXPECT_THAT(BinaryRules::violationsOfFlags("[]", {QStringLiteral("/s/Platform/")}, flags), SizeIs(1));
}
