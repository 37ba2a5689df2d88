// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/DesktopEntry.h"

#include <gtest/gtest.h>

namespace {

std::optional<DesktopEntry> parsed(const QByteArray &bytes)
{
    QString error;
    const std::optional<DesktopEntry> entry = DesktopEntry::parse(bytes, &error);
    EXPECT_EQ(entry.has_value(), error.isEmpty()) << qPrintable(error);
    return entry;
}

DesktopEntry entryWith(const QByteArray &lines)
{
    return parsed("[Desktop Entry]\n" + lines).value_or(DesktopEntry());
}

} // namespace

TEST(DesktopEntryTest, ReadsTheMainGroupOnly)
{
    const std::optional<DesktopEntry> entry =
        parsed("# a comment\n\n[Desktop Entry]\nName=One\nName[de]=Eins\n"
               "[Desktop Action x]\nName=Two\nExec=other\n");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->string("Name"), "One");
    EXPECT_EQ(entry->string("Name[de]"), "Eins");
    EXPECT_EQ(entry->string("Exec"), "");
}

TEST(DesktopEntryTest, BlanksAroundTheSignAndWindowsLineEndsAreNoPartOfAValue)
{
    EXPECT_EQ(entryWith("  Name \t= \tOne two \r\n").string("Name"), "One two ");
    EXPECT_EQ(entryWith("Name=a=b=c").string("Name"), "a=b=c");
    EXPECT_EQ(entryWith("Name=").string("Name"), "");
}

TEST(DesktopEntryTest, EscapesInStringsAreResolved)
{
    EXPECT_EQ(entryWith(R"(Name=a\sb\nc\td\re\\f\x\)").string("Name"), "a b\nc\td\re\\f\\x\\");
}

TEST(DesktopEntryTest, OnlyTrueIsTrue)
{
    for (const char *value : {"true", "1", "true "})
        EXPECT_TRUE(entryWith(QByteArray("Hidden=") + value).boolean("Hidden")) << value;
    for (const char *value : {"false", "0", "", "True", "yes", "truely"})
        EXPECT_FALSE(entryWith(QByteArray("Hidden=") + value).boolean("Hidden")) << value;
    EXPECT_FALSE(entryWith("").boolean("Hidden"));
}

TEST(DesktopEntryTest, BrokenSyntaxSaysWhere)
{
    for (const char *bytes :
         {"", "\n\n# nothing\n", "Name=One\n[Desktop Entry]\n", "[Desktop Entry\n", "[Other]\n"})
        EXPECT_FALSE(parsed(bytes)) << bytes;
    QString error;
    EXPECT_FALSE(DesktopEntry::parse("[Desktop Entry]\nName=One\n=Two\n", &error));
    EXPECT_TRUE(error.contains(u"line 3")) << qPrintable(error);
}

TEST(DesktopEntryTest, AChangeLeavesEveryOtherLine)
{
    const QByteArray entry = "# mine\n[Other]\nName=x\n[Desktop Entry]\nName=a\nName[de]=b\n Hidden = true\n"
                             "Name=c\n\n[Desktop Action x]\nName=d";
    const auto changed = DesktopEntry::changed(
        entry, {{"Exec", "one\ntwo"}, {"Hidden", std::nullopt}, {"Name", "e"}, {"Icon", std::nullopt}});
    EXPECT_EQ(changed, "# mine\n[Other]\nName=x\n[Desktop Entry]\nName=e\nName[de]=b\nExec=one\\ntwo\n"
                       "\n[Desktop Action x]\nName=d\n");
    EXPECT_EQ(DesktopEntry::changed({}, {{"Name", "a"}}), "[Desktop Entry]\nName=a\n");
}

TEST(DesktopEntryTest, EveryByteGoesThroughACommandLineUnharmed)
{
    QByteArray all = "/";
    for (int byte = 1; byte < 256; ++byte)
        all += static_cast<char>(byte);
    for (const QByteArray &program : {all, QByteArray("/a"), QByteArray("/\\"), QByteArray("/\\\\n\n"),
                                      QByteArray("/%%f%"), QByteArray("/ ends "), QByteArray("/\"'\"")}) {
        QByteArray line;
        DesktopEntry::appendString(line, DesktopEntryKeys::exec, DesktopEntry::quoted(program) + " --option");
        EXPECT_EQ(line.count('\n'), 1) << program.constData();
        EXPECT_EQ(entryWith(line).program(), program) << line.constData();
    }
}
