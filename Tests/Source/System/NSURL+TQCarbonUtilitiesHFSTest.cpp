// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/System/NSURL+TQCarbonUtilities.h"

#include "Platform/Files/FileURL.h"
#include "Tests/Platform/Files/FinderFixture.h"

#include <QFile>
#include <QRandomGenerator>
#include <QStringList>

#include <sys/stat.h>
#include <unistd.h>

namespace {

class NSURLHFSStyleTest : public FinderFixture
{
protected:
    /// The folder of the test in that style, with the colon after it.
    QString rootHFSStyle() const
    {
        QString path = root();
        return QStringLiteral("Root") + path.replace(u'/', u':') + u':';
    }
};

} // namespace

TEST_F(NSURLHFSStyleTest, BeginsWithTheNameOfTheVolume)
{
    EXPECT_EQ(fileSystemPathHFSStyle(QUrl::fromLocalFile(QStringLiteral("/"))), QStringLiteral("Root:"));
    EXPECT_EQ(fileSystemPathHFSStyle(QUrl::fromLocalFile(QStringLiteral("/proc"))),
              QStringLiteral("Root:proc:"));
    EXPECT_EQ(fileSystemPathHFSStyle(QUrl::fromLocalFile(QStringLiteral("/proc/version"))),
              QStringLiteral("Root:proc:version"));
}

TEST_F(NSURLHFSStyleTest, EndsWithAColonExactlyForAFolder)
{
    const QString folder = makeFolder();
    const QString link = makeLink(QStringLiteral("link"), folder);
    for (const QString &path : {folder, folder + u'/'})
        EXPECT_EQ(fileSystemPathHFSStyle(QUrl::fromLocalFile(path)),
                  rootHFSStyle() + QStringLiteral("folder:"));
    EXPECT_EQ(fileSystemPathHFSStyle(QUrl::fromLocalFile(makeFile())),
              rootHFSStyle() + QStringLiteral("file"));
    EXPECT_EQ(fileSystemPathHFSStyle(QUrl::fromLocalFile(link)), rootHFSStyle() + QStringLiteral("link"));
}

TEST_F(NSURLHFSStyleTest, AURLNamesAFolderExactlyIfThePathEndsWithAColon)
{
    EXPECT_EQ(URLWithFileSystemPathHFSStyle(QStringLiteral("Root:a:b")).toEncoded(), "file:///a/b");
    EXPECT_EQ(URLWithFileSystemPathHFSStyle(QStringLiteral("Root:a:b:")).toEncoded(), "file:///a/b/");
    EXPECT_EQ(URLWithFileSystemPathHFSStyle(QStringLiteral("Root:")).toEncoded(), "file:///");
}

TEST_F(NSURLHFSStyleTest, AColonInANameIsASlashThere)
{
    const QString file = makeFile(QStringLiteral("10:30 and:"));
    const QString path = fileSystemPathHFSStyle(QUrl::fromLocalFile(file));
    EXPECT_EQ(path, rootHFSStyle() + QStringLiteral("10/30 and/"));
    EXPECT_EQ(URLWithFileSystemPathHFSStyle(path), QUrl::fromLocalFile(file));
}

TEST_F(NSURLHFSStyleTest, APathThatIsNotWholeHasNoURL)
{
    for (const char *path : {"", "Root", "file", ":file", ":", "::", "root:file", "Rooted:file", "Other:file",
                             " Root:file", "Root/:file", "/file"})
        EXPECT_TRUE(URLWithFileSystemPathHFSStyle(QString::fromLatin1(path)).isEmpty()) << path;
    EXPECT_TRUE(URLWithFileSystemPathHFSStyle(QString()).isEmpty());
}

TEST_F(NSURLHFSStyleTest, AComponentThatIsNoNameHasNoURL)
{
    for (const char *path : {"Root::", "Root::file", "Root:a::b", "Root:a::", "Root:.:a", "Root:..:etc",
                             "Root:a:..", "Root:a:..:", "Root:a:."})
        EXPECT_TRUE(URLWithFileSystemPathHFSStyle(QString::fromLatin1(path)).isEmpty()) << path;
    EXPECT_TRUE(URLWithFileSystemPathHFSStyle(QStringLiteral("Root:a") + QChar(QChar::Null)).isEmpty());
    EXPECT_TRUE(URLWithFileSystemPathHFSStyle(QStringLiteral("Root:a") + QChar(0xD800)).isEmpty());
    EXPECT_FALSE(URLWithFileSystemPathHFSStyle(QStringLiteral("Root:...:a:..b")).isEmpty());
}

TEST_F(NSURLHFSStyleTest, ANameThatIsNoTextHasNoSuchPath)
{
    const QByteArray path = QFile::encodeName(root()) + "/\xFF\xFE";
    ASSERT_EQ(::mkdir(path.constData(), 0700), 0);
    EXPECT_TRUE(fileSystemPathHFSStyle(fileURLOfPath(path)).isNull());
    EXPECT_EQ(::rmdir(path.constData()), 0); // the temporary folder cannot
}

TEST_F(NSURLHFSStyleTest, HostileNamesMakeTheRoundTrip)
{
    const QStringList names = {QStringLiteral("a b"),    QStringLiteral("\"quoted'"), QStringLiteral("\n"),
                               QStringLiteral("50%41"),  QStringLiteral("-rf"),       QStringLiteral(":"),
                               QStringLiteral("::"),     QStringLiteral(":a:"),       QStringLiteral("..:"),
                               QStringLiteral("a?b#c"),  QStringLiteral("Ünïcode"),   QStringLiteral("\\"),
                               QStringLiteral("..name"), QStringLiteral("Root"),      QStringLiteral("Root:"),
                               QStringLiteral("📁"),      QStringLiteral("..."),       QStringLiteral(" "),
                               QString(QChar(0xFEFF)),   QString(255, u'n')};
    for (const QString &name : names) {
        const QUrl file = QUrl::fromLocalFile(makeFile(name));
        EXPECT_EQ(URLWithFileSystemPathHFSStyle(fileSystemPathHFSStyle(file)), file) << qPrintable(name);
        ASSERT_TRUE(QFile::remove(in(name)));
        const QUrl folder = QUrl::fromLocalFile(makeFolder(name) + u'/');
        EXPECT_EQ(URLWithFileSystemPathHFSStyle(fileSystemPathHFSStyle(folder)), folder) << qPrintable(name);
    }
}

TEST_F(NSURLHFSStyleTest, NamesOfAllSortsMakeTheRoundTrip)
{
    QRandomGenerator random(20); // the same names in every run
    constexpr QStringView characters = u":/.~ %#?\"'\\\n\taZ0ß漢";
    for (int round = 0; round < 2000; ++round) {
        QString path = QStringLiteral("Root");
        for (int depth = random.bounded(1, 5); depth > 0; --depth) {
            QString name;
            do
                name += characters[random.bounded(characters.size())];
            while (random.bounded(4) != 0);
            path += u':' + name.replace(u':', u'x');
            if (name == u"." || name == u"..")
                path += u'x';
        }
        if (random.bounded(2) == 0)
            path += u':';
        const QUrl url = URLWithFileSystemPathHFSStyle(path);
        ASSERT_FALSE(url.isEmpty()) << qPrintable(path);
        const auto bytes = pathOfFileURL(url);
        ASSERT_TRUE(bytes);
        QString back = QString::fromUtf8(*bytes);
        for (QChar &character : back)
            character = character == u'/' ? QChar(u':') : character == u':' ? QChar(u'/') : character;
        ASSERT_EQ(QStringLiteral("Root") + back, path);
    }
}
