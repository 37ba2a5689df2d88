// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Running/Creations.h"

#include "Helper/FolderPath.h"
#include "Helper/Running/OwnedWindow.h"
#include "Helper/Running/ScriptPanel.h"
#include "Platform/Desktop/DesktopFolders.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("Creations", text);
}

} // namespace

Creations::Creations(std::shared_ptr<SessionBus> bus, Answers answers, std::function<void()> idle)
    : folders_(DesktopFolders::stateFolder())
    , worker_(CreationWorker::Handlers{
          .begun = [this](const CreationOrder &order) { panel_.begin(order); },
          .ended =
              [this](const CreationOrder &order, const std::shared_ptr<CreationReport> &report) {
                  panel_.end();
                  if (!isCancelled_)
                      notices_.show(order, report);
              },
          .undone =
              [this](const UndoReport &report) {
                  if (!isCancelled_)
                      notices_.show(report);
              },
          .askAboutScript = [this](const CreationOrder &order,
                                   const Script &script) { askAboutScript(order, script); },
          .idle = std::move(idle),
      })
    , panel_([this] { return worker_->progress(); }, [this] { worker_->cancel(); })
    , notices_(std::move(bus),
               answers == Answers::Offered
                   ? [this](const std::shared_ptr<CreationReport> &report) { worker_->undo(report); }
                   : CreationNotices::UndoHandler())
{
}

Creations::~Creations() = default;

QList<CreationOrder> Creations::ordersIn(const QStringList &folders, qsizetype place, const QString &label)
{
    QList<CreationOrder> orders;
    const auto step = std::make_shared<UndoStep>(folders.size());
    for (const QString &folder : folders)
        orders.append({place, label, folder, step});
    return orders;
}

void Creations::tellOfInterrupted()
{
    if (const QStringList news = newsOfInterruptedCreations(); !news.isEmpty())
        notices_.showProblem(translated("A creation was interrupted"), news.join(u'\n'));
}

bool Creations::create(const QList<CreationOrder> &orders)
{
    if (!worker_->create(orders))
        return false;
    QMetaObject::invokeMethod(
        this, [this, orders] { remember(orders); }, Qt::QueuedConnection);
    return true;
}

void Creations::createOrTell(const QList<CreationOrder> &orders)
{
    if (!isCancelled_ && !create(orders))
        notices_.showProblem(translated("\"%1\" was not created").arg(orders.constFirst().label),
                             translated("Too many folders are waiting for their presets."));
}

void Creations::cancelAll()
{
    isCancelled_ = true;
    worker_->cancelAll();
}

void Creations::leave()
{
    isCancelled_ = true;
    worker_.reset();
}

void Creations::remember(const QList<CreationOrder> &orders)
{
    QStringList folders;
    for (const CreationOrder &order : orders.last(std::min(orders.size(), RecentFolders::mostKept)))
        folders.append(FolderPath::shortened(order.folder));
    folders_.add(folders);
}

void Creations::askAboutScript(const CreationOrder &order, const Script &script)
{
    if (isCancelled_)
        return;
    panel_.end();
    OwnedWindow::show(new ScriptPanel(order, script,
                                      [this, order](bool mayRun) {
                                          panel_.begin(order);
                                          worker_->answerAboutScript(mayRun);
                                      }),
                      this);
}
