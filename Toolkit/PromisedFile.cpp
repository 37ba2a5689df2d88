// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/PromisedFile.h"

#include "Platform/Files/DurableFileWriter.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>

#include <utility>

Q_LOGGING_CATEGORY(logPromises, "quenby.toolkit.promises")

namespace {

bool isPlainName(const QString &name)
{
    return !name.isEmpty() && name != u"." && name != u".." && !name.contains(u'/');
}

} // namespace

PromisedFile::PromisedFile(const QString &probableName, Writer writer)
    : probableName_(QString(probableName).replace(u'/', u'-'))
    , writer_(std::move(writer))
{
}

void PromisedFile::drop()
{
    giveWhenAsked();
    // Whoever was told before may look there now, without asking again.
    if (wasTold_)
        write();
}

QUrl PromisedFile::url()
{
    if (isDue_)
        return write() ? QUrl::fromLocalFile(path_) : QUrl();
    if (!isPlainName(probableName_) || !makeFolder())
        return {};
    wasTold_ = true;
    return QUrl::fromLocalFile(pathInFolder(probableName_));
}

bool PromisedFile::writeTo(const QString &path)
{
    isDue_ = true;
    if (!write())
        return false;
    QFile file(path_);
    if (!file.open(QIODevice::ReadOnly)) {
        qCWarning(logPromises) << "cannot read" << path_ << "because" << file.errorString();
        return false;
    }
    const Result<> written = DurableFileWriter().give(path, file.readAll());
    if (!written) {
        qCWarning(logPromises) << "cannot write" << path << "because" << written.error;
        return false;
    }
    file.remove();
    path_ = path;
    return true;
}

bool PromisedFile::makeFolder()
{
    if (!folder_)
        folder_ = std::make_unique<QTemporaryDir>();
    if (!folder_->isValid())
        qCWarning(logPromises) << "no folder for a promised file because" << folder_->errorString();
    return folder_->isValid();
}

bool PromisedFile::write()
{
    if (state_ != State::Promised)
        return state_ == State::Written;
    state_ = State::Failed;
    if (!makeFolder())
        return false;
    QString name = writer_(QUrl::fromLocalFile(folder_->path()));
    if (!isPlainName(name) || !QFile::exists(pathInFolder(name))) {
        qCWarning(logPromises) << "the promised file" << name << "was not written";
        return false;
    }
    const bool isElsewhere = wasTold_ && name != probableName_;
    if (isElsewhere && QFile::rename(pathInFolder(name), pathInFolder(probableName_)))
        name = probableName_;
    path_ = pathInFolder(name);
    state_ = State::Written;
    return true;
}

QString PromisedFile::pathInFolder(const QString &name) const
{
    return QDir(folder_->path()).filePath(name);
}
