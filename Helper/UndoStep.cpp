// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/UndoStep.h"

#include "Helper/Creation/FileSystemTime.h"
#include "Helper/Journals.h"

#include <QLoggingCategory>
#include <QUuid>

#include <utility>

namespace {

Q_LOGGING_CATEGORY(lcUndoStep, "quenby.helper.undostep")

} // namespace

UndoStep::UndoStep(qsizetype folders, FolderLayer &layer)
    : layer_(layer)
    , id_(QUuid::createUuid().toString(QUuid::WithoutBraces))
    , creation_{id_, {}, {}, false, FileSystemTime::now()}
    , folders_(folders)
{
}

UndoStep::~UndoStep()
{
    if (const QString problem = endAll(); !problem.isEmpty())
        qCWarning(lcUndoStep) << "the creation cannot be undone:" << problem;
}

Creation::Journal *UndoStep::beginFolder(const QString &label, const Creation::Plan &plan)
{
    creation_.label = label;
    auto journal = Journals().begin({id_, label, FileSystemTime::now(), false, plan}, layer_);
    if (!journal) {
        qCWarning(lcUndoStep) << "a creation that is killed cannot be undone:" << journal.error;
        isJournaled_ = false;
        journals_.push_back(nullptr);
        if (!isEarlierAside_)
            setEarlierAside();
        return nullptr;
    }
    journals_.push_back(*journal);
    return journals_.back().get();
}

void UndoStep::setEarlierAside()
{
    const History history;
    const Result<FileLock> lock = history.lock();
    const Result<> set = lock ? history.setAside(id_) : Result<>::failure(lock.error);
    isEarlierAside_ = bool(set);
    if (!set)
        qCWarning(lcUndoStep) << "the creation before would be taken for one that is killed:" << set.error;
}

/// It comes back if nothing was made after it.
void UndoStep::endEarlierAside()
{
    if (!std::exchange(isEarlierAside_, false))
        return;
    const History history;
    const Result<FileLock> lock = history.lock();
    Result<> ended = lock ? Result<>() : Result<>::failure(lock.error);
    if (ended)
        ended = creation_.records.empty() ? history.bringBack(id_) : history.forgetAside(id_);
    if (!ended)
        qCWarning(lcUndoStep) << "the creation before is left aside:" << ended.error;
}

std::size_t UndoStep::add(const Creation::Record &record)
{
    creation_.records.push_back(record);
    return creation_.records.size() - 1;
}

void UndoStep::discard()
{
    if (const std::shared_ptr<Creation::Journal> journal = journals_.back()) {
        if (const Result<> removed = Journals().remove(journal->path()); !removed)
            qCWarning(lcUndoStep) << "the journal of a creation that was undone is left:" << removed.error;
    }
    journals_.pop_back();
}

QString UndoStep::endFolder()
{
    return --folders_ > 0 ? QString() : endAll();
}

QString UndoStep::endAll()
{
    folders_ = 0;
    if (isStored_ || creation_.records.empty()) {
        endEarlierAside();
        return {};
    }
    isStored_ = true;
    const QString problem = store();
    endEarlierAside();
    if (problem.isEmpty() || !isJournaled_) {
        removeJournals();
        return problem;
    }
    // They say the same, and are read like those of a creation that was killed.
    qCWarning(lcUndoStep) << "the journals are kept instead:" << problem;
    reasonForJournals_ = problem;
    for (const std::shared_ptr<Creation::Journal> &journal : journals_)
        Journals().setTold(journal->path());
    journals_.clear();
    return hasChanged_ ? problem : QString();
}

QString UndoStep::store()
{
    const History history;
    const Result<FileLock> lock = history.lock();
    const Result<> stored = lock ? history.store(creation_) : Result<>::failure(lock.error);
    if (stored)
        return {};
    for (const std::shared_ptr<Creation::Journal> &journal : journals_) {
        const Result<> kept = journal ? journal->store() : Result<>();
        if (!kept) {
            qCWarning(lcUndoStep) << "the journal does not say all that was made:" << kept.error;
            isJournaled_ = false;
        }
    }
    // Nor is the one before taken for the last one.
    const Result<> forgotten = lock && !isJournaled_ ? history.forget() : Result<>();
    if (!forgotten)
        qCWarning(lcUndoStep) << "a creation that cannot be undone is remembered:" << forgotten.error;
    return stored.error;
}

void UndoStep::removeJournals()
{
    for (const std::shared_ptr<Creation::Journal> &journal : journals_) {
        const Result<> removed = journal ? Journals().remove(journal->path()) : Result<>();
        if (!removed)
            qCWarning(lcUndoStep) << "the journal of a creation that is complete is left:" << removed.error;
    }
    journals_.clear();
}

QString UndoStep::change(std::size_t place, const Creation::Record &record)
{
    creation_.records[place] = record;
    hasChanged_ = true;
    if (!isStored_ || !reasonForJournals_.isEmpty())
        return reasonForJournals_;
    const History history;
    const Result<FileLock> lock = history.lock();
    if (!lock)
        return lock.error;
    const auto last = history.read();
    // It was undone, or another one followed.
    if (!last || !*last || (*last)->id != id_ || (*last)->isBeingUndone)
        return last.error;
    return history.store(creation_).error;
}
