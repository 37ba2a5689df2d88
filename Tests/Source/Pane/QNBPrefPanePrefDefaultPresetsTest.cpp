// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PresetListFixture.h"

#include "Toolkit/ArrayController.h"

#include <QDir>
#include <QFile>
#include <QMenu>
#include <QPushButton>
#include <QTest>

namespace {

constexpr char presets[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><array>
<dict>
  <key>label</key><string>A</string>
  <key>scriptFile</key><string>Say.sh</string>
  <key>fileHierarchy</key><dict>
    <key>isFolder</key><true/>
    <key>children</key><array>
      <dict><key>filename</key><string>note</string>
            <key>contentFilename</key><string>Note.md</string></dict>
    </array>
  </dict>
</dict>
<dict><key>label</key><string>Salt &amp; Pepper</string></dict>
</array></plist>)";

const QString resources = QStringLiteral("Quenby.prefPane/Contents/Resources/");

class QNBPrefPanePrefDefaultPresets : public PresetListFixture
{
protected:
    void SetUp() override
    {
        writeFile(resources + QStringLiteral("DefaultPresets.plist"), presets);
        writeFile(resources + QStringLiteral("QNB Default AppSupport/File Content/Note.md"), "note");
        PresetListFixture::SetUp();
    }

    QMenu &menu() const { return *outlet<QMenu>(QStringLiteral("_defaultPresetsMenu")); }
    QList<QAction *> entries() const
    {
        Q_EMIT menu().aboutToShow();
        return menu().actions();
    }
    QString support(const char *name) const
    {
        return path(QStringLiteral("support/Quenby/")) + QString::fromLatin1(name);
    }
    static QByteArray contentOf(const QString &name)
    {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("nothing");
    }
};

} // namespace

TEST_F(QNBPrefPanePrefDefaultPresets, TheMenuShowsTheLabelsOfTheBundlesPresetsAsPlainText)
{
    const QList<QAction *> shown = entries();
    ASSERT_EQ(shown.size(), 2);
    EXPECT_EQ(shown.at(0)->text(), u"A");
    EXPECT_EQ(shown.at(1)->text(), u"Salt && Pepper");
    EXPECT_EQ(entries().size(), 2) << "when it opens again";
}

TEST_F(QNBPrefPanePrefDefaultPresets, TheChosenOneComesLastUnderALabelOfItsOwnInOneStep)
{
    entries().constFirst()->trigger();
    const QString another = QStringLiteral("A-1");
    EXPECT_EQ(labels(), QStringList({a, b, c, another}));
    EXPECT_EQ(controller().selectionIndex(), 3);
    EXPECT_EQ(outlineRows(), QStringList(QStringLiteral("note")));
    EXPECT_TRUE(list().hasFocus());
    EXPECT_EQ(stepToTakeBack(), u"&Undo Add Default Preset");
    pane->undo();
    EXPECT_EQ(labels(), QStringList({a, b, c}));
    pane->redo();
    EXPECT_EQ(labels(), QStringList({a, b, c, another}));

    entries().constFirst()->trigger();
    EXPECT_EQ(labels().constLast(), u"A-2");
    EXPECT_NE(record(3)->fileHierarchy(), record(4)->fileHierarchy()) << "each has a tree of its own";
}

TEST_F(QNBPrefPanePrefDefaultPresets, TheFilesThatItNamesComeBackWithItAndStay)
{
    ASSERT_TRUE(QDir(path(QStringLiteral("support"))).removeRecursively());
    entries().constFirst()->trigger();
    EXPECT_EQ(contentOf(support("File Content/Note.md")), "note");
    EXPECT_EQ(contentOf(support("Scripts/Say.sh")), "#!/bin/sh\n");
    pane->undo();
    EXPECT_EQ(contentOf(support("File Content/Note.md")), "note");
}

TEST_F(QNBPrefPanePrefDefaultPresets, AFileOfTheUsersIsNotReplaced)
{
    writeFile(QStringLiteral("support/Quenby/File Content/Note.md"), "mine");
    entries().constFirst()->trigger();
    EXPECT_EQ(contentOf(support("File Content/Note.md")), "mine");
}

TEST_F(QNBPrefPanePrefDefaultPresets, AFileThatCannotBePutThereIsToldOf)
{
    ASSERT_TRUE(QDir(support("File Content")).removeRecursively());
    writeFile(QStringLiteral("support/Quenby/File Content"), "in the way");
    alertAnswers << AlertPanel::Answer::Default;
    entries().constFirst()->trigger();
    EXPECT_EQ(labels().constLast(), u"A-1") << "is added all the same";
    ASSERT_EQ(alerts.size(), 1);
    EXPECT_EQ(alerts.constFirst().title, u"Files Missing");
    EXPECT_TRUE(alerts.constFirst().message.startsWith(
        QStringLiteral(
            "The preset 'A-1' was added, but files that it uses could not be put into the folder '%1':"
            "\nFile Content/Note.md: ")
            .arg(path(QStringLiteral("support/Quenby")))))
        << qPrintable(alerts.constFirst().message);
    EXPECT_EQ(contentOf(support("File Content")), "in the way");
}

TEST_F(QNBPrefPanePrefDefaultPresets, WithoutAnyTheMenuSaysSo)
{
    ASSERT_TRUE(QFile::remove(path(resources + QStringLiteral("DefaultPresets.plist"))));
    const QList<QAction *> shown = entries();
    ASSERT_EQ(shown.size(), 1);
    EXPECT_EQ(shown.constFirst()->text(), u"No Default Presets");
    EXPECT_FALSE(shown.constFirst()->isEnabled());
}

TEST_F(QNBPrefPanePrefDefaultPresets, KeysReachThemInTheMenuOfTheActionsButton)
{
    auto *actions = outlet<QMenu>(QStringLiteral("_presetActionsMenu"));
    ASSERT_TRUE(actions->actions().contains(menu().menuAction()));
    actions->popup({});
    actions->setActiveAction(menu().menuAction());
    QTest::keyClick(actions, Qt::Key_Right);
    ASSERT_TRUE(QTest::qWaitFor([this] { return menu().isVisible(); }));
    QTest::keyClick(&menu(), Qt::Key_Down);
    QTest::keyClick(&menu(), Qt::Key_Return);
    EXPECT_EQ(labels().constLast(), u"Salt & Pepper");
}
