// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryFile>
#include <gmock/gmock.h>

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

const QString projectFolder = QStringLiteral(QUENBY_SOURCE_TREE "/");

QString textOf(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return QString::fromUtf8(file.readAll());
}

/// The relative links of a Markdown text, without their fragments.
QStringList linksOf(const QString &markdown)
{
    static const QRegularExpression link(QStringLiteral("\\]\\(([^)#\\s]+)"));
    QStringList targets;
    auto matches = link.globalMatch(markdown);
    while (matches.hasNext()) {
        const QString target = matches.next().captured(1);
        if (!target.contains(u"://"))
            targets.append(target);
    }
    return targets;
}

QStringList documents()
{
    QStringList paths = {projectFolder + QStringLiteral("README.md"),
                         projectFolder + QStringLiteral("CONTRIBUTING.md")};
    QDirIterator walk(projectFolder + QStringLiteral("Documentation"), {QStringLiteral("*.md")}, QDir::Files,
                      QDirIterator::Subdirectories);
    while (walk.hasNext())
        paths.append(walk.next());
    return paths;
}

} // namespace

TEST(DocumentationTest, LinksLeadSomewhere)
{
    for (const QString &document : documents()) {
        for (const QString &link : linksOf(textOf(document)))
            EXPECT_TRUE(QFileInfo::exists(QFileInfo(document).path() + u'/' + link))
                << qPrintable(document) << " links to " << qPrintable(link);
    }
}

TEST(DocumentationTest, LinksAreFound)
{
    EXPECT_THAT(linksOf(QStringLiteral("![a](b/c.png) and [d](e.md#f), [g](https://quenby.example)")),
                ElementsAre(QStringLiteral("b/c.png"), QStringLiteral("e.md")));
    EXPECT_THAT(linksOf(QStringLiteral("none [here] (or here)")), IsEmpty());
}

TEST(DocumentationTest, EveryPackageIsExplained)
{
    QProcess list;
    list.start(projectFolder + QStringLiteral("scripts/install-packages"),
               {QStringLiteral("--list"), QStringLiteral("build"), QStringLiteral("wayland"),
                QStringLiteral("gnome"), QStringLiteral("systemsettings"), QStringLiteral("test")});
    ASSERT_TRUE(list.waitForFinished()) << qPrintable(list.errorString());
    const QStringList packages =
        QString::fromUtf8(list.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
    ASSERT_THAT(packages, Contains(QStringLiteral("cmake")));
    const QString readMe = textOf(projectFolder + QStringLiteral("README.md"));
    for (const QString &package : packages)
        EXPECT_TRUE(readMe.contains(u'`' + package + u'`'))
            << "README.md does not say what " << qPrintable(package) << " is for";
}

TEST(DocumentationTest, ThePackagesOfOtherDistributionsAreThoseOfTheTable)
{
    const QString readMe = textOf(projectFolder + QStringLiteral("README.md"));
    const QStringList rows =
        readMe.mid(readMe.indexOf(u"| Debian | Fedora | Arch | openSUSE |")).split(u'\n');
    int column = 1;
    for (const char *system :
         {"ID=fedora", "ID=endeavouros\nID_LIKE=arch", "ID=\"opensuse-leap\"\nID_LIKE=\"suse opensuse\""}) {
        ++column;
        QTemporaryFile release;
        ASSERT_TRUE(release.open());
        release.write(system);
        release.close();
        QProcess command;
        command.start(projectFolder + QStringLiteral("scripts/packages-elsewhere"), {release.fileName()});
        ASSERT_TRUE(command.waitForFinished()) << qPrintable(command.errorString());
        const QString line = QString::fromUtf8(command.readAllStandardOutput()).trimmed();
        QStringList named;
        for (qsizetype row = 2; rows.value(row).startsWith(u'|'); ++row)
            named += rows[row].split(u'|').value(column).remove(u'`').remove(u' ').split(u',');
        EXPECT_GT(named.size(), 9);
        EXPECT_TRUE(line.startsWith(u"sudo ") && line.endsWith(u' ' + named.join(u' '))) << qPrintable(line);
    }
    EXPECT_NE(QProcess::execute(projectFolder + QStringLiteral("scripts/packages-elsewhere"),
                                {QStringLiteral("/dev/null")}),
              0);
}

TEST(DocumentationTest, TheMetainfoNamesThisVersionFirst)
{
    static const QRegularExpression release(QStringLiteral("<release version=\"([^\"]+)\""));
    EXPECT_EQ(
        release.match(textOf(projectFolder + QStringLiteral("Resources/org.quenby.quenby.metainfo.xml.in")))
            .captured(1),
        QStringLiteral(QUENBY_VERSION));
}

TEST(DocumentationTest, ThePackageIsOfThisVersion)
{
    static const QRegularExpression entry(QStringLiteral("\\Aquenby \\(([^)]+)-[^-)]+\\) "));
    EXPECT_EQ(entry.match(textOf(projectFolder + QStringLiteral("packaging/debian/changelog"))).captured(1),
              QStringLiteral(QUENBY_VERSION));
}
