// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "PresetListFixture.h"

#include "Source/Model/QNBPresetFile.h"
#include "Toolkit/ArrayController.h"

#include <QDir>
#include <QProgressBar>
#include <QProgressDialog>
#include <QPushButton>
#include <QTest>
#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Files that the superuser could read are read as somebody else.
class AsAnotherUser
{
public:
    AsAnotherUser()
        : user_(geteuid())
    {
        constexpr uid_t nobody = 65534;
        EXPECT_TRUE(user_ != 0 || seteuid(nobody) == 0);
    }
    ~AsAnotherUser() { EXPECT_EQ(seteuid(user_), 0); }
    Q_DISABLE_COPY_MOVE(AsAnotherUser)

private:
    uid_t user_;
};

class QNBPrefPanePrefPresetImport : public PresetListFixture
{
protected:
    QString file(const QString &name, const QByteArray &bytes) const
    {
        writeFile(QStringLiteral("files/") + name, bytes);
        return path(QStringLiteral("files/") + name);
    }
    QByteArray bytesOf(const QString &name) const
    {
        QFile in(name);
        EXPECT_TRUE(in.open(QIODevice::ReadOnly));
        return in.readAll();
    }
    /// What is told of the files that gave no preset.
    PaneNotice leftOut() const { return listener.notices.value(PaneNotice::Kind::LeftOut); }
    QProgressDialog *progress() const { return view->findChild<QProgressDialog *>(); }
    /// A file that takes a while to read, again and again.
    QStringList muchToRead()
    {
        auto large = preset(QStringLiteral("Large"));
        for (int i = 0; i < 5000; ++i)
            large->fileHierarchy()->addChild(QNBHierarchyItem::init());
        QString name;
        EXPECT_TRUE(QNBPresetFile::write(*large, home.path(), &name));
        return QStringList(20, path(name));
    }

    const QString good = QStringLiteral("Good");
    const QStringList unchanged{a, b, c};
};

} // namespace

TEST_F(QNBPrefPanePrefPresetImport, AFileThatTheUserOpensGoesBelowTheSelectedPreset)
{
    ASSERT_EQ(list().selectedRow(), 0);
    pane->openFiles({presetFile(QStringLiteral("File A.qnbp"))});
    EXPECT_EQ(labels(), QStringList({a, QStringLiteral("File A"), b, c}));
    EXPECT_EQ(stepToTakeBack(), u"&Undo Import Preset");
    pane->openFiles({file(QStringLiteral("no preset.qnbp"), "nothing")});
    EXPECT_FALSE(leftOut().text.isEmpty());
}

TEST_F(QNBPrefPanePrefPresetImport, DroppingFilesABCAtRow0YieldsCBALabelledByFileName)
{
    const QStringList files{presetFile(QStringLiteral("File A.qnbp")),
                            presetFile(QStringLiteral("File.B.qnbp")), presetFile(QStringLiteral("File C"))};
    EXPECT_TRUE(accept(*dragOfFiles(files), 0, DragOperation::Copy));
    const QStringList expected{
        QStringLiteral("File C"), QStringLiteral("File.B"), QStringLiteral("File A"), a, b, c};
    EXPECT_EQ(labels(), expected);
    EXPECT_EQ(list().selectedRow(), 0);
    EXPECT_EQ(outlineRows(), QStringList(QStringLiteral("of File C")));
    EXPECT_EQ(stepToTakeBack(), u"&Undo Import Presets");
}

TEST_F(QNBPrefPanePrefPresetImport, AHundredFilesAreOneStep)
{
    QStringList files;
    QStringList expected;
    for (int i = 0; i < 100; ++i) {
        files << presetFile(QStringLiteral("File %1.qnbp").arg(i));
        expected.prepend(QStringLiteral("File %1").arg(i));
    }
    controller().setSelectionIndex(2);
    EXPECT_TRUE(accept(*dragOfFiles(files), 1, DragOperation::Copy));
    EXPECT_EQ(labels(), QStringList(a) + expected + QStringList({b, c}));
    const QNBPresetRecordPtr one = record(50);
    pane->undo();
    EXPECT_EQ(labels(), unchanged);
    EXPECT_EQ(list().selectedRow(), 2);
    leavePane();
    EXPECT_EQ(stored().presets.size(), 3) << "nothing of it is kept";
    pane->redo();
    EXPECT_EQ(labels().mid(1, 100), expected);
    EXPECT_EQ(record(50), one);
}

TEST_F(QNBPrefPanePrefPresetImport, OneFileIsNamedAsOne)
{
    EXPECT_TRUE(accept(*dragOfFiles({presetFile(QStringLiteral("Good.qnbp"))}), 3, DragOperation::Copy));
    EXPECT_EQ(labels(), QStringList({a, b, c, good}));
    EXPECT_EQ(stepToTakeBack(), u"&Undo Import Preset");
}

TEST_F(QNBPrefPanePrefPresetImport, WhatIsNoPresetIsSkippedAndTheDropSucceeds)
{
    const QString preset = presetFile(QStringLiteral("Good.qnbp"));
    const QByteArray bytes = bytesOf(preset);
    QDir().mkpath(path(QStringLiteral("files/folder.qnbp")));
    const QStringList files{
        path(QStringLiteral("files/folder.qnbp")),
        path(QStringLiteral("files/vanished.qnbp")),
        file(QStringLiteral("empty.qnbp"), {}),
        file(QStringLiteral("text.qnbp"), "no archive"),
        file(QStringLiteral("truncated.qnbp"), bytes.left(bytes.size() / 2)),
        preset,
        file(QStringLiteral("without its end.qnbp"), bytes.chopped(1)),
        file(QStringLiteral("depth bomb.qnbp"),
             "<plist version=\"1.0\">" + QByteArray("<array>").repeated(100000)),
    };
    EXPECT_TRUE(accept(*dragOfFiles(files), 3, DragOperation::Copy));
    EXPECT_EQ(labels(), QStringList({a, b, c, good}));
    EXPECT_TRUE(alerts.isEmpty());
}

TEST_F(QNBPrefPanePrefPresetImport, ADropOfWhichNothingIsReadSucceedsAndIsNoStep)
{
    EXPECT_TRUE(accept(*dragOfFiles({home.path()}), 0, DragOperation::Copy));
    EXPECT_EQ(labels(), unchanged);
    EXPECT_EQ(stepToTakeBack(), u"&Undo");
}

TEST_F(QNBPrefPanePrefPresetImport, ADropWithoutFilesFails)
{
    QMimeData nothing;
    EXPECT_FALSE(accept(nothing, 0, DragOperation::Copy));
    QMimeData elsewhere;
    elsewhere.setUrls({QUrl(QStringLiteral("https://quenby.example/a.qnbp"))});
    EXPECT_FALSE(accept(elsewhere, 0, DragOperation::Copy)) << "these are no paths";
    EXPECT_EQ(labels(), unchanged);
}

TEST_F(QNBPrefPanePrefPresetImport, AFifoIsSkippedAtOnce)
{
    const QString fifo = path(QStringLiteral("fifo.qnbp"));
    ASSERT_EQ(mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    EXPECT_TRUE(
        accept(*dragOfFiles({fifo, presetFile(QStringLiteral("Good.qnbp"))}), 3, DragOperation::Copy));
    EXPECT_EQ(labels(), QStringList({a, b, c, good}));
}

TEST_F(QNBPrefPanePrefPresetImport, AFileOfATerabyteIsSkippedAtOnce)
{
    const QString huge = file(QStringLiteral("huge.qnbp"), "bplist00");
    ASSERT_TRUE(QFile::resize(huge, qint64(1) << 40));
    EXPECT_TRUE(
        accept(*dragOfFiles({huge, presetFile(QStringLiteral("Good.qnbp"))}), 3, DragOperation::Copy));
    EXPECT_EQ(labels(), QStringList({a, b, c, good}));
    EXPECT_EQ(leftOut().text, QStringLiteral("“huge.qnbp” was not imported: larger than 268435456 bytes."));
}

TEST_F(QNBPrefPanePrefPresetImport, WhatTheCommandLeavesOutIsToldUntilTheNextImport)
{
    filePanelAnswers.append(QStringList{file(QStringLiteral("text.qnbp"), "no archive"), path(good)});
    pane->importPresetsFromFiles();
    EXPECT_TRUE(leftOut().text.startsWith(u"“text.qnbp” was not imported: ")) << qPrintable(leftOut().text);
    EXPECT_TRUE(leftOut().details.contains(path(good))) << "that is not there";
    EXPECT_TRUE(alerts.isEmpty());
    filePanelAnswers.append(QStringList{presetFile(QStringLiteral("Good.qnbp"))});
    pane->importPresetsFromFiles();
    EXPECT_FALSE(listener.notices.contains(PaneNotice::Kind::LeftOut));
}

TEST_F(QNBPrefPanePrefPresetImport, AFileThatTheUserMayNotReadIsSkipped)
{
    const QString secret = presetFile(QStringLiteral("Secret.qnbp"));
    ASSERT_TRUE(QFile::setPermissions(secret, {}));
    {
        const AsAnotherUser another;
        EXPECT_TRUE(accept(*dragOfFiles({secret}), 3, DragOperation::Copy));
    }
    EXPECT_EQ(labels(), unchanged);
}

TEST_F(QNBPrefPanePrefPresetImport, AFileGivenTwiceIsTwoPresets)
{
    const QString preset = presetFile(QStringLiteral("Good.qnbp"));
    EXPECT_TRUE(accept(*dragOfFiles({preset, preset}), 1, DragOperation::Copy));
    EXPECT_EQ(labels(), QStringList({a, good, good, b, c}));
    EXPECT_NE(record(1), record(2));
    EXPECT_NE(record(1)->fileHierarchy()->uid(), record(2)->fileHierarchy()->uid());
    pane->undo();
    EXPECT_EQ(labels(), unchanged);
}

TEST_F(QNBPrefPanePrefPresetImport, OddFileNamesAreLabels)
{
    const QStringList names{QStringLiteral("100% #1?.qnbp"), QStringLiteral("\u00e4\u00f6 \U0001F4C1.qnbp"),
                            QStringLiteral("new\nline.qnbp"), QStringLiteral(" blanks .qnbp")};
    QStringList files;
    for (const QString &name : names)
        files.prepend(presetFile(name));
    EXPECT_TRUE(accept(*dragOfFiles(files), 0, DragOperation::Copy));
    for (int row = 0; row < names.size(); ++row)
        EXPECT_EQ(record(row)->label() + QStringLiteral(".qnbp"), names.at(row));
}

TEST_F(QNBPrefPanePrefPresetImport, AnExportedPresetComesBackAsItWas)
{
    drag(1, home.path());
    EXPECT_TRUE(accept(*dragOfFiles({path(QStringLiteral("B.qnbp"))}), 3, DragOperation::Copy));
    EXPECT_EQ(record(3)->toStored(), record(1)->toStored());
    EXPECT_NE(record(3)->fileHierarchy()->uid(), record(1)->fileHierarchy()->uid());
}

class QNBPrefPanePrefLongImport : public QNBPrefPanePrefPresetImport
{
protected:
    /// The progress takes the keyboard, and with that the pane saves.
    void TearDown() override {}

    QNBPrefPanePrefLongImport() { unexplainedWait = std::chrono::milliseconds(0); }
};

TEST_F(QNBPrefPanePrefLongImport, ShowsItsProgressAndEndsLikeAShortOne)
{
    const QStringList files = muchToRead();
    EXPECT_TRUE(accept(*dragOfFiles(files), 1, DragOperation::Copy));
    EXPECT_EQ(labels(), unchanged) << "the window goes on meanwhile";
    ASSERT_TRUE(progress());
    EXPECT_TRUE(progress()->isVisible());
    EXPECT_TRUE(progress()->isModal());
    const auto *bar = progress()->findChild<QProgressBar *>();
    EXPECT_EQ(bar->maximum(), files.size());
    EXPECT_TRUE(QTest::qWaitFor([bar] { return bar->value() > 0; }));
    constexpr int patience = 60000;
    ASSERT_TRUE(QTest::qWaitFor([this] { return !progress(); }, patience));
    EXPECT_EQ(labels(), QStringList(a) + QStringList(20, QStringLiteral("Large")) + QStringList({b, c}));
    pane->undo();
    EXPECT_EQ(labels(), unchanged);
}

TEST_F(QNBPrefPanePrefLongImport, TellsWhatItLeavesOutToo)
{
    // Long enough for the progress to be shown, which is where it ends.
    EXPECT_TRUE(accept(*dragOfFiles(muchToRead() + QStringList(path(QStringLiteral("vanished.qnbp")))), 1,
                       DragOperation::Copy));
    ASSERT_TRUE(progress());
    EXPECT_FALSE(listener.notices.contains(PaneNotice::Kind::LeftOut));
    constexpr int patience = 60000;
    ASSERT_TRUE(QTest::qWaitFor([this] { return !progress(); }, patience));
    EXPECT_TRUE(leftOut().text.startsWith(u"“vanished.qnbp” was not imported: "))
        << qPrintable(leftOut().text);
}

TEST_F(QNBPrefPanePrefLongImport, CanBeCancelled)
{
    EXPECT_TRUE(accept(*dragOfFiles(muchToRead()), 1, DragOperation::Copy));
    ASSERT_TRUE(progress());
    // At once: nothing that was read meanwhile has arrived.
    progress()->findChild<QPushButton *>()->click();
    constexpr int patience = 60000;
    ASSERT_TRUE(QTest::qWaitFor([this] { return !progress(); }, patience));
    EXPECT_EQ(labels(), unchanged);
    EXPECT_EQ(stepToTakeBack(), u"&Undo");
}

TEST_F(QNBPrefPanePrefLongImport, EndsWithThePane)
{
    EXPECT_TRUE(accept(*dragOfFiles(muchToRead()), 1, DragOperation::Copy));
    ASSERT_TRUE(progress());
    EXPECT_TRUE(pane->didUnselect());
    pane.reset();
    EXPECT_TRUE(QTest::qWaitFor([this] { return !progress(); }));
    EXPECT_EQ(stored().presets.size(), 3);
}
