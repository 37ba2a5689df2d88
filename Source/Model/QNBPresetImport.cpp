// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Model/QNBPresetImport.h"

#include "Source/Model/QNBPresetFile.h"

#include <QDeadlineTimer>
#include <QLoggingCategory>
#include <QThread>

Q_LOGGING_CATEGORY(lcPresetImport, "quenby.presetimport")

QNBPresetImport::QNBPresetImport(QStringList paths, QObject *parent)
    : QObject(parent)
    , paths_(std::move(paths))
    , thread_(QThread::create([this] { read(); }))
{
    connect(thread_.get(), &QThread::finished, this, &QNBPresetImport::finished);
    thread_->start();
}

QNBPresetImport::~QNBPresetImport()
{
    cancel();
    thread_->wait();
}

bool QNBPresetImport::wait(std::chrono::milliseconds time)
{
    return thread_->wait(QDeadlineTimer(time));
}

void QNBPresetImport::cancel()
{
    isCancelled_ = true;
    thread_->requestInterruption();
}

QList<QNBPresetRecordPtr> QNBPresetImport::presets() const
{
    return thread_->isFinished() && !isCancelled_ ? presets_ : QList<QNBPresetRecordPtr>();
}

QList<QNBPresetImport::LeftOut> QNBPresetImport::leftOut() const
{
    return thread_->isFinished() && !isCancelled_ ? leftOut_ : QList<LeftOut>();
}

void QNBPresetImport::read()
{
    int numberOfFilesRead = 0;
    for (const QString &path : std::as_const(paths_)) {
        if (QThread::currentThread()->isInterruptionRequested())
            return;
        if (const Result<QNBPresetRecordPtr> preset = QNBPresetFile::read(path)) {
            presets_.append(*preset);
        } else {
            const QString &error = preset.error;
            const QString pathInReason = path + QStringLiteral(": ");
            leftOut_.append({path, error.startsWith(pathInReason) ? error.mid(pathInReason.size()) : error});
            qCWarning(lcPresetImport) << "no preset in" << path << ":" << leftOut_.constLast().reason;
        }
        Q_EMIT fileWasRead(++numberOfFilesRead);
    }
}
