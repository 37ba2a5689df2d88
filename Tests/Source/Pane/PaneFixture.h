// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Desktop/KeyCodes.h"
#include "Source/Pane/QNBPrefPanePref.h"
#include "Toolkit/OutlineView.h"

#include <QAbstractItemModelTester>
#include <QMap>
#include <QTemporaryDir>
#include <QUrl>
#include <gtest/gtest.h>
#include <memory>

class ArrayController;

/// Notes what the pane tells its host.
class RecordingListener final : public PreferencePaneListener
{
public:
    void saved(const Result<> &result) override { results.append(result); }
    void showNotice(const PaneNotice &notice) override { notices.insert(notice.kind, notice); }
    void takeBackNotice(PaneNotice::Kind kind) override { notices.remove(kind); }

    QList<Result<>> results;
    QMap<PaneNotice::Kind, PaneNotice> notices;
};

/// While this lives a file stands where the folder \a folder was, which is kept beside it.
class DomainOutOfReach
{
public:
    explicit DomainOutOfReach(const QString &folder);
    ~DomainOutOfReach();
    DomainOutOfReach(const DomainOutOfReach &) = delete;
    DomainOutOfReach &operator=(const DomainOutOfReach &) = delete;

private:
    QString folder_;
};

/// A pane in a world of its own: temporary folders, a bundle made on the spot, notifications and links that
/// are only noted down.
class PaneFixture : public ::testing::Test
{
protected:
    PaneFixture();
    ~PaneFixture() override;

    /// A record with a label and, below its root, the given names; those that end in "/" are folders with one
    /// file inside.
    static QNBPresetRecordPtr preset(const QString &label, const QStringList &names = {});
    /// Makes these the stored presets.
    void store(const QList<QNBPresetRecordPtr> &presets);
    /// Edits neither save nor tell anybody: that waits until the pane is left or loses the keyboard.
    void expectNothingSavedSinceStoring() const;
    /// Leaves the pane, which saves.
    void leavePane();
    /// What a reader of the domain finds now.
    QNBSettings stored() const;

    QNBPrefPanePref::Services services();
    /// Makes the pane, as a host would, up to the shown window.
    void openPane() { openPane(services()); }
    void openPane(QNBPrefPanePref::Services world);
    /// Leaves nothing of it; the pane goes first, as a host must do it.
    void closePane();
    /// Another window of this process takes the keyboard, then ours has it back.
    void loseKeyboardAndRegainIt();

    template <typename T>
    T *outlet(const QString &name) const
    {
        return dynamic_cast<T *>(view->findChild<QObject *>(name));
    }
    ArrayController &controller() const;
    TableView &list() const;
    OutlineView &outline() const;
    /// The outline's texts, row by row.
    QStringList outlineRows() const;

    QByteArray domainOnDisk() const;
    QString path(const QString &name) const { return home.filePath(name); }
    void writeFile(const QString &name, const QByteArray &bytes) const;

    /// Puts a helper into the pane's bundle; its path.
    QString addHelper() const;
    TQProcess startHelper();

    QTemporaryDir home;
    /// The domain as store() left it.
    QByteArray storedDomain;
    RecordingListener listener;
    /// Below the temporary home. What is not saved is kept so late that only who wants it sees it.
    static inline const QString recoveryFolder = QStringLiteral("state/Quenby/Recovery");
    std::chrono::milliseconds recoveryDelay = std::chrono::minutes(5);
    QStringList notifications;
    QList<QUrl> openedURLs;
    QStringList openedFiles;
    /// Shown in the file manager.
    QStringList selectedFiles;
    /// The alerts and file dialogs that the pane put, and what the next ones are answered; one without an
    /// answer fails the test.
    QList<AlertPanel> alerts;
    QList<AlertPanel::Answer> alertAnswers;
    QList<FilePanel> filePanels;
    QList<QStringList> filePanelAnswers;
    /// The earlier states that the pane offered last, and which of them is chosen; none for cancelling.
    QList<QNBEarlierState> offeredStates;
    std::optional<int> chosenState;
    /// However slow the machine is, what is asked for is there when the call returns.
    std::chrono::milliseconds unexplainedWait = std::chrono::minutes(5);
    /// The processes that are called like the helper. One is added when its bundle is opened, and goes when
    /// it is told to end, unless it fails to.
    QList<TQProcess> helpers;
    /// How often the pane has looked for running processes.
    int processLooks = 0;
    bool helperStarts = true;
    bool helperEnds = true;
    /// What was done about the helper, step by step.
    QStringList helperSteps;
    /// The installer offers nothing on a system that does not tell its version.
    std::optional<qint32> installerSystemVersion;
    /// What the file managers' plug-in was asked, and what it says to that; else nothing.
    QStringList pluginCommands;
    QMap<QString, Result<QString>> pluginAnswers;
    /// Tells the pane that the helper has come or gone.
    std::function<void()> helperChanged;
    /// What it answers at once; nothing without a helper.
    std::optional<QNBHelperState> helperState;
    /// Shared by the installer for as long as there is one.
    std::shared_ptr<int> installerLifetime = std::make_shared<int>();
    std::unique_ptr<QNBPrefPanePref> pane;
    std::unique_ptr<QWidget> view;
    std::unique_ptr<QAbstractItemModelTester> listTester;
    std::unique_ptr<QAbstractItemModelTester> outlineTester;
};
