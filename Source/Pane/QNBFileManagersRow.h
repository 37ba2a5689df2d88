// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Source/System/CMMInstaller.h"
#include "Toolkit/PreferencePane.h"

#include <QCoreApplication>
#include <QObject>
#include <QStringList>

#include <functional>

QT_BEGIN_NAMESPACE
class QLabel;
class QPushButton;
class QWidget;
QT_END_NAMESPACE

/// The row "File managers" of the tab General: in whose menus the presets are, and what puts them there or
/// takes them out, by the plug-in that the pane carries. What the plug-in says is shown; nobody waits for it.
class QNBFileManagersRow : public QObject
{
    Q_DECLARE_TR_FUNCTIONS(QNBFileManagersRow)

public:
    using InstallerServices = std::function<CMMInstaller::Services()>;
    using Listener = std::function<PreferencePaneListener *()>;

    /// The row's controls are found in \a view by name.
    QNBFileManagersRow(QWidget &view, InstallerServices services, Listener listener);

    /// Looks anew which file managers there are, and which have the entries.
    void update();
    /// The same; then, once in a user's life, if there are file managers and nothing was installed, tells in
    /// the strip above the pane that there is this row.
    void updateAndTell();

private:
    void install();
    void remove();
    /// Something is done from now on; until it has been done, and the plug-in said \a answer to it.
    void begin(const QString &sentence);
    void end(const Result<QString> &answer);
    void showAnswer(const Result<QString> &answer);
    void show(const QStringList &sentences, bool canInstall, bool canRemove);
    void tellOnce(CMMInstaller &installer);
    void takeBackTip();
    /// Shows the tab with the row.
    void reveal();
    CMMInstaller installer();

    const InstallerServices services_;
    const Listener listener_;
    QLabel *state_;
    QPushButton *installButton_;
    QPushButton *removeButton_;
    /// Of what was done last: why it failed, or what the plug-in remarked; empty if all went well, or what
    /// was missing after it is there by now.
    QString problem_;
    QStringList without_;
    /// What was done last was to install.
    bool wasInstalled_ = false;
    bool isToTell_ = false;
    bool isBusy_ = false;
};
