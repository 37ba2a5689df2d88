// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/CreationNotices.h"

#include "Helper/Running/OwnedWindow.h"
#include "Platform/Desktop/Workspace.h"
#include "Platform/LineText.h"
#include "Toolkit/PlainText.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QUrl>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcNotices, "quenby.helper.notices")

using Status = CreationReport::Status;

const QString showFolderAction = QStringLiteral("show-folder");
const QString undoAction = QStringLiteral("undo");

QString translated(const char *text)
{
    return QCoreApplication::translate("CreationNotices", text);
}

QString title(const CreationReport &report)
{
    switch (report.status) {
    case Status::Created:
        return translated("\"%1\" was created").arg(report.label);
    case Status::ScriptNotAllowed:
        return translated("\"%1\" was created, its script did not run").arg(report.label);
    case Status::ScriptFailed:
    case Status::ScriptTimedOut:
        return translated("\"%1\" was created, its script failed").arg(report.label);
    default:
        return translated("\"%1\" was not created").arg(report.label);
    }
}

QString text(const CreationOrder &order, const CreationReport &report)
{
    QStringList lines;
    if (report.isCreated()) {
        lines.append(translated("In %1").arg(order.folder));
        const auto renamed = report.plan.conflicts().size();
        if (renamed == 1)
            lines.append(translated("%1 was there already: the new one is called %2")
                             .arg(report.plan.conflicts().constFirst().path,
                                  report.plan.conflicts().constFirst().newName));
        else if (renamed > 1)
            lines.append(
                translated("%1 items were there already: the new ones got other names").arg(renamed));
    }
    if (report.status != Status::Created && !report.message.isEmpty())
        lines.append(report.message);
    if (!report.warning.isEmpty())
        lines.append(report.warning);
    for (QString &line : lines)
        line = lineText(line);
    return lines.join(u'\n');
}

} // namespace

CreationNotices::CreationNotices(std::shared_ptr<SessionBus> bus, UndoHandler undo)
    : undo_(std::move(undo))
    , notifications_(std::move(bus))
{
}

void CreationNotices::show(const CreationOrder &order, const std::shared_ptr<CreationReport> &report)
{
    // Who cancels need not be told.
    if (report->status == Status::Cancelled)
        return;
    if (!report->isCreated()) {
        showProblem(title(*report), text(order, *report));
        return;
    }
    reports_.append(report);
    if (reports_.size() > mostKept)
        reports_.removeFirst();
    Notifications::Notice notice{title(*report), text(order, *report)};
    notice.actions = {{showFolderAction, translated("Show folder")}, {undoAction, translated("Undo")}};
    if (undo_)
        notice.handler = [this, kept = std::weak_ptr(report), folder = order.folder](const QString &action) {
            act(action, kept, folder);
        };
    if (report->status != Status::Created || !report->warning.isEmpty())
        notice.notShown = [this, notice] { showWindow(notice.title, notice.text); };
    notifications_.show(notice);
}

void CreationNotices::show(const UndoReport &report)
{
    if (report.status == UndoReport::Status::Undone)
        notifications_.show({translated("Undone"), lineText(report.message)});
    else if (report.status == UndoReport::Status::Incomplete)
        showProblem(translated("Not all was undone"), lineText(report.message));
    else
        showProblem(translated("Nothing was undone"), lineText(report.message));
}

void CreationNotices::showProblem(const QString &title, const QString &text)
{
    Notifications::Notice notice{title, text};
    notice.notShown = [this, title, text] { showWindow(title, text); };
    notifications_.show(notice);
}

void CreationNotices::act(const QString &action, const std::weak_ptr<CreationReport> &report,
                          const QString &folder)
{
    if (action == showFolderAction) {
        if (!Workspace::openURL(QUrl::fromLocalFile(folder)))
            qCWarning(lcNotices) << "not shown:" << folder;
    } else if (action == undoAction) {
        if (const std::shared_ptr<CreationReport> kept = report.lock())
            undo_(kept);
        else
            showProblem(translated("Nothing was undone"), translated("This creation was too long ago"));
    }
}

void CreationNotices::showWindow(const QString &title, const QString &text)
{
    QMessageBox *const box = PlainText::messageBox(translated("Quenby"), title, text);
    box->setStandardButtons(QMessageBox::Ok);
    OwnedWindow::show(box, this);
}
