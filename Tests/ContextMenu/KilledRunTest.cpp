// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

// Runs that are killed at every change that they make to the disk.

#include "ContextMenu/Registration.h"
#include "Tests/ContextMenu/MenuHome.h"
#include "Tests/Session/KilledProcess.h"

#include <QFileInfo>
#include <QXmlStreamReader>

namespace {

const QByteArray otherActions = "<actions>\n<action><name>theirs</name></action>\n</actions>\n";

class KilledRunTest : public MenuHome
{
protected:
    KilledRunTest()
        : MenuHome(Programs::OfThisMachine)
    {
        // One with files of ours, one with a file that holds others' actions.
        makeFolder(data(QStringLiteral("nautilus")));
        makeFolder(config(QStringLiteral("Thunar")));
        put(config(QStringLiteral("Thunar/uca.xml")), otherActions);
        storePresets({QStringLiteral("a")});
    }

    /// The home without the domain, which is the pane's to save, and without the folder for the list of what
    /// was written: it is made before anything can be noted in it, and removed after.
    QMap<QString, QByteArray> content() const
    {
        auto files = contentOfHome();
        files.removeIf([this](const auto &file) {
            return file.key().contains(u"org.quenby.Quenby.plist") ||
                   file.key() == QFileInfo(manifest()).path();
        });
        return files;
    }

    static QStringList differences(const QMap<QString, QByteArray> &one,
                                   const QMap<QString, QByteArray> &other)
    {
        QStringList paths = one.keys() + other.keys();
        paths.removeDuplicates();
        paths.removeIf([&](const QString &path) { return one.value(path) == other.value(path); });
        return paths;
    }

    void expectOthersActionsWhole() const
    {
        const QByteArray file = contentOf(config(QStringLiteral("Thunar/uca.xml")));
        EXPECT_TRUE(file.contains("<action><name>theirs</name></action>")) << file.constData();
        QXmlStreamReader reader(file);
        while (!reader.atEnd())
            reader.readNext();
        EXPECT_FALSE(reader.hasError()) << qPrintable(reader.errorString()) << file.constData();
    }

    /// Has runs with \a arguments killed after \a prepare, and expects that nothing is left of any in the
    /// end.
    template <typename Prepare>
    void killRuns(const QStringList &arguments, Prepare prepare)
    {
        const auto before = content();
        int kills = 0;
        for (const char *name : {"rename", "mkdir", "unlink", "rmdir"}) {
            for (int number = 1;; ++number) {
                prepare();
                if (!KilledProcess::isKilledAt(
                        QString::fromLatin1(name), number,
                        QStringLiteral(QUENBY_CONTEXT_MENU "/Contents/MacOS/QNBContextMenu"), arguments))
                    break;
                ++kills;
                expectOthersActionsWhole();
                ASSERT_TRUE(Registration::unregister());
                ASSERT_EQ(differences(content(), before), QStringList()) << name << " " << number;
            }
            ASSERT_TRUE(Registration::unregister());
            ASSERT_EQ(differences(content(), before), QStringList()) << name;
        }
        EXPECT_GT(kills, 5);
    }
};

} // namespace

TEST_F(KilledRunTest, NothingIsLeftOfARegistrationThatWasKilled)
{
    killRuns({QStringLiteral("register"), QString::fromUtf8(helper())}, [] {});
}

TEST_F(KilledRunTest, NothingIsLeftOfARefreshThatWasKilled)
{
    killRuns({QStringLiteral("refresh"), QString::fromUtf8(helper())}, [this] {
        storePresets({QStringLiteral("a")});
        ASSERT_TRUE(Registration::registerWith(helper()));
        storePresets({QStringLiteral("b")});
    });
}

TEST_F(KilledRunTest, NothingIsLeftOfARemovalThatWasKilled)
{
    killRuns({QStringLiteral("unregister")}, [this] { ASSERT_TRUE(Registration::registerWith(helper())); });
}
