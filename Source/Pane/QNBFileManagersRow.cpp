// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Pane/QNBFileManagersRow.h"

#include "Platform/LineText.h"

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTabWidget>

#include <utility>

namespace {

const QString stateName = QStringLiteral("_fileManagersState");
const QString installButtonName = QStringLiteral("_installMenusButton");
const QString removeButtonName = QStringLiteral("_removeMenusButton");
/// In the plug-in's list, after the name of a file manager.
const QString hasEntries = QStringLiteral("yes");
/// Of those in the list, they read their entries only when they start.
const QStringList needRestart = {QStringLiteral("Thunar"), QStringLiteral("PCManFM-Qt")};

QString inLine(const QStringList &names)
{
    return lineText(names.join(QStringLiteral(", ")));
}

} // namespace

QNBFileManagersRow::QNBFileManagersRow(QWidget &view, InstallerServices services, Listener listener)
    : services_(std::move(services))
    , listener_(std::move(listener))
    , state_(view.findChild<QLabel *>(stateName))
    , installButton_(view.findChild<QPushButton *>(installButtonName))
    , removeButton_(view.findChild<QPushButton *>(removeButtonName))
{
    connect(installButton_, &QPushButton::clicked, this, &QNBFileManagersRow::install);
    connect(removeButton_, &QPushButton::clicked, this, &QNBFileManagersRow::remove);
    show({}, false, false);
}

CMMInstaller QNBFileManagersRow::installer()
{
    CMMInstaller::Services services = services_();
    services.registered = [row = QPointer(this)](const Result<QString> &answer) {
        if (!row)
            return;
        row->wasInstalled_ = true;
        row->end(answer);
    };
    return CMMInstaller(std::move(services));
}

void QNBFileManagersRow::begin(const QString &sentence)
{
    isBusy_ = true;
    wasInstalled_ = false;
    takeBackTip();
    show({sentence}, false, false);
}

void QNBFileManagersRow::end(const Result<QString> &answer)
{
    isBusy_ = false;
    problem_ = answer ? answer->trimmed() : answer.error;
    without_.clear();
    update();
}

void QNBFileManagersRow::update()
{
    if (isBusy_)
        return;
    const CMMInstaller ours = installer();
    if (!ours.canInstall()) {
        show({tr("This installation comes without the menu for file managers.")}, false, false);
        return;
    }
    ours.listFileManagers([row = QPointer(this)](const Result<QString> &answer) {
        if (row && !row->isBusy_)
            row->showAnswer(answer);
    });
}

void QNBFileManagersRow::updateAndTell()
{
    isToTell_ = true;
    update();
}

void QNBFileManagersRow::showAnswer(const Result<QString> &answer)
{
    CMMInstaller ours = installer();
    const auto notWell = [](const QString &problem) {
        return tr("Not everything went well: %1").arg(lineText(problem));
    };
    // To install is also what repairs a list that cannot be read.
    if (!answer)
        return show({notWell(answer.error)}, true, ours.isInstalled());
    QStringList with;
    const bool wasMissing = !std::exchange(without_, {}).isEmpty();
    const QStringList lines = answer->split(u'\n', Qt::SkipEmptyParts);
    for (const QString &line : lines)
        (line.section(u'\t', 1) == hasEntries ? with : without_).append(line.section(u'\t', 0, 0));
    if (wasMissing && without_.isEmpty())
        problem_.clear();

    QStringList sentences;
    if (!with.isEmpty())
        sentences.append(tr("The presets are in the menus of %1.").arg(inLine(with)));
    if (!without_.isEmpty())
        sentences.append(tr("They are not in the menus of %1.").arg(inLine(without_)));
    if (with.isEmpty())
        sentences =
            without_.isEmpty()
                ? QStringList(tr("No file manager was found that takes entries for its menus."))
                : QStringList(tr("The presets are not in the menus of %1 yet.").arg(inLine(without_)));
    QStringList late = needRestart;
    late.removeIf([&with](const QString &name) { return !with.contains(name); });
    if (wasInstalled_ && !late.isEmpty())
        sentences.append(tr("In %1 they show up once the file manager is started again.").arg(inLine(late)));
    if (!problem_.isEmpty())
        sentences.append(notWell(problem_));
    const bool isOld = ours.isInstalled() && !ours.isCurrent();
    if (isOld)
        sentences.append(tr("What is installed comes from another version of Quenby."));
    show(sentences, isOld || !without_.isEmpty() || (!with.isEmpty() && !problem_.isEmpty()),
         !with.isEmpty() || ours.isInstalled());
    if (std::exchange(isToTell_, false) && with.isEmpty() && !without_.isEmpty())
        tellOnce(ours);
}

void QNBFileManagersRow::show(const QStringList &sentences, bool canInstall, bool canRemove)
{
    state_->setText(sentences.join(u'\n'));
    installButton_->setEnabled(canInstall);
    removeButton_->setEnabled(canRemove);
}

void QNBFileManagersRow::install()
{
    begin(tr("The presets are being put into the menus…"));
    // It may ask questions, during which the pane may go.
    const QPointer row(this);
    if (!installer().installCMM() && row)
        end(QString());
}

void QNBFileManagersRow::remove()
{
    begin(tr("The presets are being taken out of the menus…"));
    installer().removeCMM([row = QPointer(this)](const Result<QString> &answer) {
        if (row)
            row->end(answer);
    });
}

void QNBFileManagersRow::tellOnce(CMMInstaller &installer)
{
    PreferencePaneListener *const listener = listener_();
    if (!listener || installer.isInstalled() || installer.wasOffered())
        return;
    installer.setOffered();
    listener->showNotice({.kind = PaneNotice::Kind::Tip,
                          .text = tr("The presets can be put into the menus of %1.").arg(inLine(without_)),
                          .actions = {{tr("Show Me"), [row = QPointer(this)] {
                                           if (row)
                                               row->reveal();
                                       }}}});
}

void QNBFileManagersRow::takeBackTip()
{
    if (PreferencePaneListener *const listener = listener_())
        listener->takeBackNotice(PaneNotice::Kind::Tip);
}

void QNBFileManagersRow::reveal()
{
    takeBackTip();
    for (QWidget *page = installButton_; page; page = page->parentWidget()) {
        auto *tabs =
            page->parentWidget() ? qobject_cast<QTabWidget *>(page->parentWidget()->parentWidget()) : nullptr;
        if (tabs)
            tabs->setCurrentWidget(page);
    }
    installButton_->setFocus();
}
