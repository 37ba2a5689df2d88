// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Files/FileCatalog.h"

#include "Tests/Platform/Files/FinderFixture.h"

#include <QDir>
#include <QFile>

#include <cstdio>
#include <cstdlib>
#include <gmock/gmock.h>
#include <string>
#include <unistd.h>

using ::testing::ResultOf;

namespace {

class FileCatalogTest : public FinderFixture
{
protected:
    static FSRef referenceTo(const QString &path)
    {
        const auto reference = FileCatalog::reference(QFile::encodeName(path));
        EXPECT_TRUE(reference) << qPrintable(path);
        return reference.value_or(FSRef());
    }

    static std::optional<FinderInfo> finderInfo(const QString &path)
    {
        return FileCatalog::finderInfo(referenceTo(path));
    }

    static bool setFinderInfo(const QString &path, const FinderInfo &information)
    {
        return FileCatalog::setFinderInfo(referenceTo(path), information);
    }

    static void setFlags(const QString &path, quint16 flags)
    {
        auto information = finderInfo(path);
        ASSERT_TRUE(information);
        information->setFlags(flags);
        EXPECT_TRUE(setFinderInfo(path, *information));
    }

    /// Ends the process, which takes nothing apart.
    [[noreturn]] void leave(bool isAsExpected) const
    {
        const bool isClean = QDir(root()).removeRecursively();
        std::exit(isClean && isAsExpected ? EXIT_SUCCESS : EXIT_FAILURE);
    }
};

/// A user without the administrator's rights, until the end of the block.
class OrdinaryUser
{
public:
    OrdinaryUser()
    {
        constexpr uid_t nobody = 65534;
        EXPECT_TRUE(before_ != 0 || ::seteuid(nobody) == 0);
    }
    ~OrdinaryUser() { EXPECT_EQ(::seteuid(before_), 0); }
    OrdinaryUser(const OrdinaryUser &) = delete;
    OrdinaryUser &operator=(const OrdinaryUser &) = delete;

private:
    const uid_t before_ = ::geteuid();
};

/// What is logged goes where a parent process reads it, and nowhere else.
void logToStandardError()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &context, const QString &text) {
        std::fprintf(stderr, "%s: %s\n", context.category, qPrintable(text));
    });
}

auto hasLines(int count)
{
    return ResultOf(
        [](const std::string &log) {
            return QByteArray::fromStdString(log).count("quenby.platform.filecatalog: ");
        },
        count);
}

} // namespace

TEST_F(FileCatalogTest, AnEntryWithoutTheAttributeHasInformationThatIsAllZero)
{
    for (const QString &path : {makeFile(), makeFolder()}) {
        ASSERT_FALSE(attributeOf(path));
        ASSERT_TRUE(finderInfo(path));
        EXPECT_EQ(finderInfo(path)->attribute(), QByteArray(32, '\0'));
        EXPECT_FALSE(attributeOf(path)) << "reading wrote";
    }
}

TEST_F(FileCatalogTest, ReadsTheAttribute)
{
    for (const QString &path : {makeFile(), makeFolder()}) {
        setAttribute(path, numberedBytes());
        ASSERT_TRUE(finderInfo(path));
        EXPECT_EQ(finderInfo(path)->attribute(), numberedBytes());
    }
}

TEST_F(FileCatalogTest, WritesAnAttributeOfThirtyTwoBytes)
{
    for (const QString &path : {makeFile(), makeFolder()}) {
        setFlags(path, 0x0402);
        EXPECT_EQ(attributeOf(path), QByteArray(8, '\0') + QByteArray("\x04\x02", 2) + QByteArray(22, '\0'));
    }
}

TEST_F(FileCatalogTest, WritingKeepsWhatOnlyOthersKnow)
{
    const QString path = makeFile();
    setAttribute(path, numberedBytes());
    setFlags(path, 0xFFFF);
    EXPECT_EQ(attributeOf(path), numberedBytes().replace(8, 2, "\xFF\xFF"));
}

TEST_F(FileCatalogTest, AShortAttributeIsMadeWhole)
{
    const QString path = makeFile();
    for (const qsizetype length : {0, 1, 9, 16, 31}) {
        const QByteArray start = numberedBytes().first(length);
        QByteArray whole = start + QByteArray(32 - length, '\0');
        setAttribute(path, start);
        setFlags(path, 0xFFFF);
        EXPECT_EQ(attributeOf(path), whole.replace(8, 2, "\xFF\xFF")) << length;
    }
}

TEST_F(FileCatalogTest, ALongAttributeKeepsItsEnd)
{
    const QString path = makeFile();
    for (const qsizetype length : {33, 64, 1000}) {
        const QByteArray whole = numberedBytes() + QByteArray(length - 32, 'x');
        setAttribute(path, whole);
        setFlags(path, 0xFFFF);
        EXPECT_EQ(attributeOf(path), QByteArray(whole).replace(8, 2, "\xFF\xFF")) << length;
    }
}

TEST_F(FileCatalogTest, APipeHasNoInformationAndTakesNone)
{
    const QString pipe = makePipe();
    ASSERT_TRUE(finderInfo(pipe));
    EXPECT_EQ(finderInfo(pipe)->attribute(), QByteArray(32, '\0'));
    EXPECT_FALSE(setFinderInfo(pipe, FinderInfo(numberedBytes())));
}

TEST_F(FileCatalogTest, ALinkIsLeftAloneAndSoIsWhatItLeadsTo)
{
    const QString file = makeFile();
    setAttribute(file, numberedBytes());
    const QString link = makeLink(QStringLiteral("link"), file);
    ASSERT_TRUE(finderInfo(link));
    EXPECT_EQ(finderInfo(link)->attribute(), QByteArray(32, '\0'));
    EXPECT_FALSE(setFinderInfo(link, FinderInfo()));
    EXPECT_EQ(attributeOf(file), numberedBytes());
    EXPECT_FALSE(attributeOf(link));
}

TEST_F(FileCatalogTest, AFileSystemWithoutAttributesRefusesBoth)
{
    EXPECT_FALSE(finderInfo(fileWithoutAttributes()));
    EXPECT_FALSE(setFinderInfo(fileWithoutAttributes(), FinderInfo()));
}

TEST_F(FileCatalogTest, AFileThatTheUserMayOnlyReadKeepsItsInformation)
{
    const QString file = makeFile();
    setAttribute(file, numberedBytes());
    ASSERT_EQ(::chmod(QFile::encodeName(root()).constData(), 0755), 0);
    ASSERT_EQ(::chmod(QFile::encodeName(file).constData(), 0444), 0);
    {
        const OrdinaryUser user;
        ASSERT_TRUE(finderInfo(file));
        EXPECT_EQ(finderInfo(file)->attribute(), numberedBytes());
        EXPECT_FALSE(setFinderInfo(file, FinderInfo()));
    }
    EXPECT_EQ(attributeOf(file), numberedBytes());
}

TEST_F(FileCatalogTest, ARefusalIsLoggedOnceForEachReason)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a process that has logged nothing yet
    EXPECT_EXIT(
        {
            logToStandardError();
            const QString file = fileWithoutAttributes();
            const QString link = makeLink(QStringLiteral("link"), file);
            const bool isRefused =
                !finderInfo(file) && !finderInfo(file) && !finderInfo(QStringLiteral("/proc/self/stat")) &&
                !setFinderInfo(makePipe(), FinderInfo()) && !setFinderInfo(link, FinderInfo());
            leave(isRefused);
        },
        ::testing::ExitedWithCode(EXIT_SUCCESS), hasLines(2));
}

TEST_F(FileCatalogTest, AMissingFileIsNoRefusal)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            logToStandardError();
            const FSRef reference = referenceTo(makeFile());
            const bool isGone = QFile::remove(in(QStringLiteral("file")));
            const bool isRefused =
                !FileCatalog::finderInfo(reference) && !FileCatalog::setFinderInfo(reference, FinderInfo());
            leave(isGone && isRefused);
        },
        ::testing::ExitedWithCode(EXIT_SUCCESS), hasLines(0));
}
