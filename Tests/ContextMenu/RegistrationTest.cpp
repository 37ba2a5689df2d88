// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/Registration.h"

#include "ContextMenu/FileManager.h"
#include "Shared/Source/QNBShared.h"
#include "Tests/ContextMenu/MenuHome.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>

#include <algorithm>
#include <sys/stat.h>

namespace {

class RegistrationTest : public MenuHome
{
protected:
    QString serviceMenu() const { return data(QStringLiteral("kio/servicemenus/org.quenby.Quenby.desktop")); }
    QString nautilusScript(const char *name) const
    {
        return data(QStringLiteral("nautilus/scripts/Quenby/") + QString::fromLatin1(name));
    }
    QStringList nautilusScripts() const
    {
        return QDir(data(QStringLiteral("nautilus/scripts/Quenby"))).entryList(QDir::Files);
    }
    /// An entry of somebody else's for each file manager that takes files, beside ours; when they were
    /// written.
    QMap<QString, QDateTime> putOthersEntries() const
    {
        for (const QString &path :
             {data(QStringLiteral("kio/servicemenus/theirs.desktop")),
              data(QStringLiteral("nautilus/scripts/theirs")), data(QStringLiteral("nemo/scripts/theirs")),
              data(QStringLiteral("file-manager/actions/theirs.desktop")),
              config(QStringLiteral("caja/scripts/theirs"))}) {
            makeFolder(QFileInfo(path).path());
            put(path, "theirs: " + path.toUtf8());
        }
        QMap<QString, QDateTime> theirs = timesOfHome();
        theirs.removeIf([](const auto &file) { return !file.key().contains(u"/theirs"); });
        EXPECT_EQ(theirs.size(), 5);
        return theirs;
    }
    /// The times of now of \a files.
    QMap<QString, QDateTime> timesOf(QMap<QString, QDateTime> files) const
    {
        const auto now = timesOfHome();
        for (auto file = files.begin(); file != files.end(); ++file)
            *file = now.value(file.key());
        return files;
    }
    void storeAB() const { storePresets({QStringLiteral("a"), QStringLiteral("b")}); }

    const QString more_ = QStringLiteral("More…");
};

} // namespace

TEST_F(RegistrationTest, FileManagersAreThereByTheirProgramOrTheirFolder)
{
    const auto present = [] {
        QStringList names;
        for (const std::unique_ptr<FileManager> &manager : FileManager::all()) {
            if (manager->isPresent())
                names.append(manager->name());
        }
        return names;
    };
    EXPECT_EQ(present(), QStringList());
    programs_.add(QStringLiteral("dolphin"));
    programs_.add(QStringLiteral("pcmanfm-qt"));
    EXPECT_EQ(present(), QStringList({QStringLiteral("Dolphin"), QStringLiteral("PCManFM-Qt")}));
    haveAllFileManagers();
    EXPECT_EQ(present().size(), 6);
}

TEST_F(RegistrationTest, EntriesAreWrittenForThoseThatAreThere)
{
    storeAB();
    makeFolder(data(QStringLiteral("dolphin")));
    ASSERT_TRUE(Registration::registerWith(helper()));
    EXPECT_TRUE(contentOf(serviceMenu()).contains("Name=b\n"));
    EXPECT_FALSE(QFile::exists(data(QStringLiteral("nautilus"))));
    EXPECT_FALSE(QFile::exists(config(QStringLiteral("Thunar"))));
    struct stat information = {};
    ASSERT_EQ(::stat(serviceMenu().toUtf8().constData(), &information), 0);
    EXPECT_EQ(information.st_mode & 0777, 0700u);
}

TEST_F(RegistrationTest, TheHomeIsAsBeforeAfterwards)
{
    storePresets(hostileLabels());
    haveAllFileManagers();
    put(config(QStringLiteral("Thunar/uca.xml")), "<actions>\n<action><name>x</name></action>\n</actions>\n");
    const auto others = putOthersEntries();
    // The domain is the pane's to save.
    const auto contentBesidesDomain = [this] {
        auto content = contentOfHome();
        content.removeIf([](const auto &file) { return file.key().contains(u"org.quenby.Quenby.plist"); });
        return content;
    };
    const auto before = contentBesidesDomain();
    ASSERT_TRUE(Registration::registerWith(helper()));
    EXPECT_GT(contentBesidesDomain().size(), before.size() + 4 * hostileLabels().size());
    EXPECT_EQ(timesOf(others), others);
    storeAB();
    ASSERT_TRUE(Registration::refresh(helper()));
    ASSERT_TRUE(Registration::unregister());
    EXPECT_EQ(contentBesidesDomain(), before);
    EXPECT_EQ(timesOf(others), others);
}

TEST_F(RegistrationTest, TheSameIsNotWrittenAgain)
{
    storePresets(hostileLabels());
    haveAllFileManagers();
    ASSERT_TRUE(Registration::registerWith(helper()));
    const auto content = contentOfHome();
    const auto times = timesOfHome();
    ASSERT_TRUE(Registration::refresh(helper()));
    ASSERT_TRUE(Registration::registerWith(helper()));
    EXPECT_EQ(contentOfHome(), content);
    EXPECT_EQ(timesOfHome(), times);
}

TEST_F(RegistrationTest, PresetsThatChangeShowUp)
{
    storeAB();
    haveAllFileManagers();
    ASSERT_TRUE(Registration::registerWith(helper()));
    EXPECT_EQ(nautilusScripts(), QStringList({QStringLiteral("a"), QStringLiteral("b"), more_}));
    storePresets({QStringLiteral("b"), QStringLiteral("c")});
    ASSERT_TRUE(Registration::refresh(helper()));
    EXPECT_EQ(nautilusScripts(), QStringList({QStringLiteral("b"), QStringLiteral("c"), more_}));
    EXPECT_FALSE(contentOf(serviceMenu()).contains("Name=a\n"));
    EXPECT_TRUE(contentOf(serviceMenu()).contains("Name=c\n"));
    EXPECT_TRUE(contentOf(config(QStringLiteral("Thunar/uca.xml"))).contains("<name>c</name>"));

    storePresets({});
    ASSERT_TRUE(Registration::refresh(helper()));
    EXPECT_EQ(nautilusScripts(), QStringList(more_)) << "that there is none is shown too";
}

TEST_F(RegistrationTest, WithoutRegistrationNothingIsRefreshed)
{
    storeAB();
    haveAllFileManagers();
    const auto before = contentOfHome();
    EXPECT_TRUE(Registration::refresh(helper()));
    EXPECT_TRUE(Registration::unregister());
    EXPECT_EQ(contentOfHome(), before);
}

TEST_F(RegistrationTest, AFileManagerThatIsInstalledLaterGetsItsEntriesAtTheNextRefresh)
{
    storeAB();
    makeFolder(data(QStringLiteral("dolphin")));
    ASSERT_TRUE(Registration::registerWith(helper()));
    EXPECT_EQ(nautilusScripts(), QStringList());
    programs_.add(QStringLiteral("nautilus"));
    ASSERT_TRUE(Registration::refresh(helper()));
    EXPECT_EQ(nautilusScripts().size(), 3);
    ASSERT_TRUE(Registration::unregister());
    EXPECT_EQ(nautilusScripts(), QStringList());
}

TEST_F(RegistrationTest, EntriesThatNameAnOldPlaceAreWrittenFromTheNewOne)
{
    storeAB();
    haveAllFileManagers();
    const QByteArray oldPlace = "/old place/QNBHelper";
    ASSERT_TRUE(Registration::registerWith(oldPlace));
    const auto namesOldPlace = [&] {
        const auto content = contentOfHome();
        return std::count_if(content.begin(), content.end(),
                             [&](const QByteArray &file) { return file.contains(oldPlace); });
    };
    // One file for all, or one for each preset and the last entry.
    EXPECT_EQ(namesOldPlace(), 2 + 4 * 3);
    const QString theirs = data(QStringLiteral("nautilus/scripts/theirs"));
    put(theirs, oldPlace);
    ASSERT_TRUE(Registration::refresh(helper()));
    EXPECT_EQ(namesOldPlace(), 1);
    EXPECT_EQ(contentOf(theirs), oldPlace) << "no file of ours";
    EXPECT_TRUE(contentOf(serviceMenu()).contains("Some.prefPane"));
}

TEST_F(RegistrationTest, WithoutAHelperTheMenuWaitsForIt)
{
    storeAB();
    makeFolder(data(QStringLiteral("dolphin")));
    EXPECT_EQ(Registration::registerWith({}).value,
              QStringList(QStringLiteral("the helper was not found, it writes the menu when it starts")));
    EXPECT_FALSE(QFile::exists(serviceMenu()));
    ASSERT_TRUE(Registration::refresh(helper()));
    EXPECT_TRUE(contentOf(serviceMenu()).contains("Name=a\n"));
}

TEST_F(RegistrationTest, PresetsThatWereNeverStoredAreThePanes)
{
    makeFolder(pane() + QStringLiteral("/Contents/Resources"));
    put(pane() + QStringLiteral("/Contents/Resources/DefaultPresets.plist"),
        "<plist version=\"1.0\"><array><dict><key>label</key><string>By Default</string></dict></array>"
        "</plist>");
    const Result<PresetMenu> menu = Registration::menuFor(helper());
    ASSERT_TRUE(menu);
    ASSERT_EQ(menu->items.size(), 2);
    EXPECT_EQ(menu->items.first().title, QStringLiteral("By Default"));
    storeAB();
    EXPECT_EQ(Registration::menuFor(helper())->items.size(), 3);
}

TEST_F(RegistrationTest, EntriesStayWhilePresetsCannotBeRead)
{
    storeAB();
    haveAllFileManagers();
    ASSERT_TRUE(Registration::registerWith(helper()));
    const QStringList scripts = nautilusScripts();
    ASSERT_EQ(scripts.size(), 3);
    const QString domain = config(QNBProductIdentifier() + QStringLiteral(".plist"));
    ASSERT_TRUE(QFile::remove(domain));
    // Of a folder in its place nobody can say what it holds.
    makeFolder(domain);
    EXPECT_FALSE(Registration::refresh(helper()));
    EXPECT_EQ(nautilusScripts(), scripts);
}

TEST_F(RegistrationTest, WhatItsUserHasChangedIsLeftAlone)
{
    storeAB();
    haveAllFileManagers();
    ASSERT_TRUE(Registration::registerWith(helper()));
    put(nautilusScript("a"), "mine now");
    put(serviceMenu(), "mine too");
    const QString suffix = QStringLiteral(" was changed since it was written, and is left alone");
    const QStringList changed{serviceMenu() + suffix, nautilusScript("a") + suffix};
    EXPECT_EQ(Registration::refresh(helper()).value, changed);
    EXPECT_EQ(Registration::registerWith(helper()).value, changed);
    storePresets({QStringLiteral("b"), QStringLiteral("c")});
    ASSERT_TRUE(Registration::refresh(helper()));
    EXPECT_EQ(contentOf(nautilusScript("a")), "mine now");
    EXPECT_EQ(contentOf(serviceMenu()), "mine too");
    EXPECT_TRUE(QFile::exists(nautilusScript("c")));
    ASSERT_TRUE(Registration::unregister());
    EXPECT_EQ(nautilusScripts(), QStringList(QStringLiteral("a")));
    EXPECT_EQ(contentOf(serviceMenu()), "mine too");
    EXPECT_FALSE(QFile::exists(manifest()));
}

TEST_F(RegistrationTest, WhatWasThereBeforeIsLeftAlone)
{
    storeAB();
    haveAllFileManagers();
    makeFolder(data(QStringLiteral("nautilus/scripts/Quenby")));
    put(nautilusScript("a"), "theirs");
    ASSERT_TRUE(QDir().mkpath(serviceMenu()));
    const auto before = contentOfHome();
    ASSERT_TRUE(Registration::registerWith(helper()));
    EXPECT_EQ(contentOf(nautilusScript("a")), "theirs");
    EXPECT_TRUE(QFile::exists(nautilusScript("b")));
    ASSERT_TRUE(Registration::unregister());
    EXPECT_EQ(contentOfHome(), before);
}

TEST_F(RegistrationTest, AFolderThatOthersUseStays)
{
    storeAB();
    programs_.add(QStringLiteral("nautilus"));
    ASSERT_TRUE(Registration::registerWith(helper()));
    put(data(QStringLiteral("nautilus/scripts/theirs")), "");
    ASSERT_TRUE(Registration::unregister());
    EXPECT_EQ(
        QDir(data(QStringLiteral("nautilus/scripts"))).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
        QStringList(QStringLiteral("theirs")));
}

TEST_F(RegistrationTest, OneFailureKeepsNoneOfTheOthers)
{
    storeAB();
    haveAllFileManagers();
    const QByteArray damaged = "<actions>";
    put(config(QStringLiteral("Thunar/uca.xml")), damaged);
    // No folder can be made where a file is.
    put(data(QStringLiteral("kio")), "");
    const Result<QStringList> result = Registration::registerWith(helper());
    EXPECT_FALSE(result);
    EXPECT_TRUE(result.error.contains(u"uca.xml") && result.error.contains(u"kio")) << "every reason is told";
    EXPECT_EQ(contentOf(config(QStringLiteral("Thunar/uca.xml"))), damaged);
    EXPECT_EQ(nautilusScripts().size(), 3);
    EXPECT_TRUE(QFile::exists(config(QStringLiteral("caja/scripts/Quenby/a"))));
    EXPECT_EQ(
        Registration::list()->join(u'\n'),
        QStringLiteral("Dolphin\tno\nNautilus\tyes\nNemo\tyes\nThunar\tno\nPCManFM-Qt\tyes\nCaja\tyes"));

    ASSERT_TRUE(QFile::remove(data(QStringLiteral("kio"))));
    ASSERT_TRUE(QFile::remove(config(QStringLiteral("Thunar/uca.xml"))));
    EXPECT_TRUE(Registration::refresh(helper()));
    EXPECT_TRUE(QFile::exists(serviceMenu()));
    EXPECT_TRUE(Registration::unregister());
}

TEST_F(RegistrationTest, EntriesThatTheirUserHasTakenOutAreListedNoMore)
{
    storeAB();
    makeFolder(data(QStringLiteral("dolphin")));
    makeFolder(config(QStringLiteral("Thunar")));
    const QString actions = config(QStringLiteral("Thunar/uca.xml"));
    ASSERT_TRUE(Registration::registerWith(helper()));
    EXPECT_EQ(Registration::list().value,
              (QStringList{QStringLiteral("Dolphin\tyes"), QStringLiteral("Thunar\tyes")}));
    ASSERT_TRUE(QFile::remove(serviceMenu()));
    put(actions, "<actions>\n<action><name>quenby-like</name></action>\n</actions>\n");
    EXPECT_EQ(Registration::list().value,
              (QStringList{QStringLiteral("Dolphin\tno"), QStringLiteral("Thunar\tno")}));
    ASSERT_TRUE(QFile::remove(actions));
    EXPECT_EQ(Registration::list().value,
              (QStringList{QStringLiteral("Dolphin\tno"), QStringLiteral("Thunar\tno")}));
    ASSERT_TRUE(Registration::registerWith(helper()));
    EXPECT_EQ(Registration::list().value,
              (QStringList{QStringLiteral("Dolphin\tyes"), QStringLiteral("Thunar\tyes")}));
}

TEST_F(RegistrationTest, AManifestThatCannotBeReadCountsAsNone)
{
    storeAB();
    makeFolder(data(QStringLiteral("dolphin")));
    makeFolder(QFileInfo(manifest()).path());
    put(manifest(), "no property list");
    EXPECT_TRUE(Registration::refresh(helper()));
    EXPECT_FALSE(QFile::exists(serviceMenu()));
    EXPECT_TRUE(Registration::registerWith(helper()));
    EXPECT_TRUE(QFile::exists(serviceMenu()));
}

TEST_F(RegistrationTest, WithAManifestThatCannotBeReadNothingPassesForUnregistered)
{
    storeAB();
    makeFolder(data(QStringLiteral("dolphin")));
    ASSERT_TRUE(Registration::registerWith(helper()));
    put(manifest(), "no property list");
    const Result<QStringList> unknown = Registration::unregister();
    EXPECT_FALSE(unknown);
    EXPECT_TRUE(unknown.error.contains(manifest())) << qPrintable(unknown.error);
    EXPECT_TRUE(QFile::exists(serviceMenu()));
    // What is as it was written is known again after this.
    EXPECT_TRUE(Registration::registerWith(helper()));
    EXPECT_TRUE(Registration::unregister());
    EXPECT_FALSE(QFile::exists(serviceMenu()));
}
