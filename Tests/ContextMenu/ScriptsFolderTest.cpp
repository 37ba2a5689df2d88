// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/ScriptsFolder.h"

#include "ContextMenu/CajaMenu.h"
#include "ContextMenu/NautilusMenu.h"
#include "ContextMenu/NemoMenu.h"
#include "Tests/ContextMenu/MenuHome.h"
#include "Tests/Session/ChildProcess.h"

#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QUrl>

namespace {

using File = FileManagerWithFiles::File;

const QString selectedURIs = QStringLiteral("NAUTILUS_SCRIPT_SELECTED_URIS");
const QString currentURI = QStringLiteral("NAUTILUS_SCRIPT_CURRENT_URI");

/// As the file managers spell the address of \a path.
QString address(const QString &path)
{
    return QString::fromLatin1("file://" + QUrl::toPercentEncoding(path, "/"));
}

class ScriptsFolderTest : public MenuHome
{
protected:
    /// The script for a preset of that label, ready to be run.
    QString scriptFor(const QString &label) const
    {
        const File file = NautilusMenu().files(menuOf({label})).value(0);
        const QString path = in(QStringLiteral("script"));
        put(path, file.content);
        EXPECT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner | QFile::WriteOwner));
        return path;
    }

    /// What the script says to be no success, without calling anybody.
    void expectRefused(const QMap<QString, QString> &variables)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (auto variable = variables.begin(); variable != variables.end(); ++variable)
            environment.insert(variable.key(), variable.value());
        ChildProcess process(scriptFor(QStringLiteral("a")), {}, environment);
        ASSERT_TRUE(process.waitForEnd());
        EXPECT_TRUE(process.hasReturned(1));
        EXPECT_FALSE(hasBeenCalled());
    }
};

} // namespace

TEST_F(ScriptsFolderTest, EachPresetIsAScriptOfItsName)
{
    const QList<File> files = NautilusMenu().files(menuOf({QStringLiteral("b"), QStringLiteral("a c")}));
    ASSERT_EQ(files.size(), 3);
    EXPECT_EQ(files.at(2).path, data(QStringLiteral("nautilus/scripts/Quenby/More…")));
    EXPECT_TRUE(files.at(2).content.contains("'--launcher' '--notify' \"$@\""))
        << files.at(2).content.constData();
    EXPECT_EQ(files.at(0).path, data(QStringLiteral("nautilus/scripts/Quenby/b")));
    EXPECT_EQ(files.at(1).path, data(QStringLiteral("nautilus/scripts/Quenby/a c")));
    EXPECT_TRUE(files.at(1).isExecutable);
    EXPECT_EQ(CajaMenu().files(menuOf({QStringLiteral("b")})).value(0).path,
              config(QStringLiteral("caja/scripts/Quenby/b")));
    EXPECT_EQ(NemoMenu().files(menuOf({QStringLiteral("b")})).value(0).path,
              data(QStringLiteral("nemo/scripts/Quenby/b")));
}

TEST_F(ScriptsFolderTest, EveryLabelGivesAFileNameThatIsShown)
{
    const QStringList labels = hostileLabels();
    const QList<File> files = NautilusMenu().files(menuOf(labels));
    const QString folder = data(QStringLiteral("nautilus/scripts/Quenby/"));
    QSet<QString> names;
    ASSERT_EQ(files.size(), labels.size() + 1);
    for (const File &file : files) {
        ASSERT_TRUE(file.path.startsWith(folder));
        const QString name = file.path.mid(folder.size());
        EXPECT_FALSE(name.isEmpty() || name.contains(u'/') || name.startsWith(u'.') || name.endsWith(u'~'))
            << qPrintable(name);
        EXPECT_FALSE(name.contains(u'%')) << qPrintable(name);
        EXPECT_LE(name.toUtf8().size(), 255) << qPrintable(name);
        EXPECT_FALSE(names.contains(name)) << qPrintable(name);
        names.insert(name);
    }
}

TEST_F(ScriptsFolderTest, NamesThatWouldBeOneAreNumbered)
{
    QStringList taken;
    EXPECT_EQ(ScriptsFolder::fileName(QStringLiteral("a/b"), taken), QStringLiteral("a\u2215b"));
    EXPECT_EQ(ScriptsFolder::fileName(QStringLiteral("a\u2215b"), taken), QStringLiteral("a\u2215b 2"));
    EXPECT_EQ(ScriptsFolder::fileName(QStringLiteral("a/b"), taken), QStringLiteral("a\u2215b 3"));
    EXPECT_EQ(ScriptsFolder::fileName(QStringLiteral("100% %f"), taken), QStringLiteral("100\uFF05 \uFF05f"));
    const QString longName = QStringLiteral("漢").repeated(100);
    EXPECT_EQ(ScriptsFolder::fileName(longName, taken), longName.left(80));
    EXPECT_EQ(ScriptsFolder::fileName(longName, taken), longName.left(80) + QStringLiteral(" 2"));
}

TEST_F(ScriptsFolderTest, EveryScriptIsClean)
{
    for (const QString &label : hostileLabels()) {
        const QString path = scriptFor(label);
        ChildProcess shell(QStringLiteral("/bin/sh"), {QStringLiteral("-n"), path});
        ASSERT_TRUE(shell.waitForEnd());
        EXPECT_TRUE(shell.hasReturned(0)) << qPrintable(label) << shell.errors().constData();
    }
    // That constants with a dollar sign stay as they are is meant so.
    ChildProcess check(QStringLiteral(QUENBY_SHELLCHECK),
                       {QStringLiteral("--exclude=SC2016"), scriptFor(QStringLiteral("a"))});
    ASSERT_TRUE(check.waitForEnd());
    EXPECT_TRUE(check.hasReturned(0)) << check.output().constData();
}

TEST_F(ScriptsFolderTest, EveryLabelReachesTheHelper)
{
    const QString folder = makeFolder(in(QStringLiteral("target")));
    for (const QString &label : hostileLabels())
        expectCalled(scriptFor(label), {}, label, {folder.toUtf8()}, {{selectedURIs, address(folder)}});
    EXPECT_FALSE(QFile::exists(QStringLiteral("owned")));
}

TEST_F(ScriptsFolderTest, EverySelectedFolderIsMeant)
{
    QString addresses;
    QByteArrayList folders;
    for (const QByteArray &name : hostileFolders()) {
        const QString folder = makeFolder(in(QStringLiteral("targets/") + QString::fromUtf8(name)));
        folders.append(folder.toUtf8());
        addresses += address(folder) + u'\n';
    }
    // What is selected is given as arguments too, which count for nothing.
    expectCalled(scriptFor(QStringLiteral("a")), {QStringLiteral("--undo"), QStringLiteral("plain")},
                 QStringLiteral("a"), folders,
                 {{selectedURIs, addresses}, {currentURI, address(home_.path())}});
}

TEST_F(ScriptsFolderTest, ASelectedFileMeansItsFolderOnce)
{
    const QString folder = makeFolder(in(QStringLiteral("targets")));
    const QString inside = makeFolder(folder + QStringLiteral("/in side"));
    for (const char *name : {"/a", "/b"})
        put(folder + QString::fromLatin1(name), "");
    const QString addresses = address(folder + QStringLiteral("/a")) + u'\n' + address(inside) + u'\n' +
                              address(folder + QStringLiteral("/b")) + u'\n';
    expectCalled(scriptFor(QStringLiteral("a")), {}, QStringLiteral("a"), {folder.toUtf8(), inside.toUtf8()},
                 {{selectedURIs, addresses}});
    expectCalled(scriptFor(QStringLiteral("a")), {}, QStringLiteral("a"), {"/"},
                 {{selectedURIs, QStringLiteral("file:///no-such-file")}});
}

TEST_F(ScriptsFolderTest, WithoutASelectionTheCurrentFolderIsMeant)
{
    const QString folder = makeFolder(in(QStringLiteral("a % current\n")));
    const PresetMenu menu = menuOf({QStringLiteral("a")});
    for (const auto &[file, prefix] : {std::pair(CajaMenu().files(menu).value(0), "CAJA"),
                                       std::pair(NemoMenu().files(menu).value(0), "NEMO")}) {
        const QString script = in(QString::fromLatin1(prefix));
        put(script, file.content);
        ASSERT_TRUE(QFile::setPermissions(script, QFile::ReadOwner | QFile::ExeOwner));
        const QString variable = QString::fromLatin1(prefix) + QStringLiteral("_SCRIPT_%1_URI%2");
        expectCalled(script, {}, QStringLiteral("a"), {folder.toUtf8()},
                     {{variable.arg(QStringLiteral("SELECTED"), QStringLiteral("S")), QString()},
                      {variable.arg(QStringLiteral("CURRENT"), QString()), address(folder)}});
    }
}

TEST_F(ScriptsFolderTest, WhatIsNoPlaceOfThisMachineIsRefused)
{
    expectRefused({});
    for (const char *uri : {"trash:///x", "file://elsewhere/x", "file:///a%zz", "file:///a%", "file:///a%0",
                            "file:///a%00b", "file:///a\\0101", "/a", "sftp://host/a"}) {
        expectRefused({{selectedURIs, QString::fromLatin1(uri)}});
        expectRefused({{currentURI, QString::fromLatin1(uri)}});
    }
}
