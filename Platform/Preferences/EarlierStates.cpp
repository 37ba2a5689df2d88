// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Preferences/EarlierStates.h"

#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/Files/BoundedFile.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace {

const QString folderName = QStringLiteral("Earlier States");
const QString suffix = QStringLiteral(".plist");
const QString utcStamp = QStringLiteral("yyyyMMdd'T'HHmmss.zzz'Z'");

/// Whether a copy of that \a size would be the first to go.
bool isTooOld(qint64 size, const QDateTime &saved, const QList<EarlierStates::State> &states)
{
    qsizetype number = 0;
    for (const EarlierStates::State &state : states) {
        if (state.saved >= saved) {
            ++number;
            size += state.size;
        }
    }
    return number >= EarlierStates::numberKept || size > EarlierStates::sizeKept;
}

bool isKept(const QByteArray &bytes, const QList<EarlierStates::State> &states)
{
    return std::any_of(states.begin(), states.end(), [&bytes](const EarlierStates::State &state) {
        return state.size == bytes.size() && BoundedFile::read(state.path, bytes.size()).value == bytes;
    });
}

} // namespace

QString EarlierStates::folder()
{
    const QString state = DesktopFolders::stateFolder();
    return state.isEmpty() ? QString() : QDir(state).filePath(folderName);
}

EarlierStates::EarlierStates(const QString &folder, FileLayer *layer)
    : writer_(layer)
    , folder_(folder)
{
}

QList<EarlierStates::State> EarlierStates::all() const
{
    QList<State> states;
    // The names sort by time.
    const QFileInfoList entries = QDir(folder_).entryInfoList({u'*' + suffix}, QDir::Files | QDir::NoSymLinks,
                                                              QDir::Name | QDir::Reversed);
    for (const QFileInfo &entry : entries) {
        QDateTime saved = QDateTime::fromString(entry.fileName().chopped(suffix.size()), utcStamp);
        saved.setTimeSpec(Qt::UTC);
        if (saved.isValid())
            states.append({saved, entry.filePath(), entry.size()});
    }
    return states;
}

Result<> EarlierStates::keep(const QByteArray &bytes, const QDateTime &saved, const QDateTime &now) const
{
    QList<State> states = all();
    const bool isTooSoon = std::any_of(states.begin(), states.end(), [&now](const State &state) {
        // A copy from the future says only that the clock was changed.
        const QDateTime made = QFileInfo(state.path).lastModified();
        return made <= now && made.addSecs(std::chrono::seconds(interval).count()) > now;
    });
    if (isTooSoon || isTooOld(bytes.size(), saved, states) || DesktopFolders::isOthers(folder_) ||
        isKept(bytes, states))
        return {};
    if (Result<> made = writer_.makeFolder(folder_); !made)
        return made;
    const QString path = pathFor(saved);
    writer_.removeStrayTemporaries(path);
    if (Result<> written = writer_.write(path, bytes); !written)
        return written;

    states = all();
    qint64 size = 0;
    for (qsizetype i = 0; i < states.size(); ++i) {
        size += states[i].size;
        if (i < numberKept && size <= sizeKept)
            continue;
        if (Result<> removed = writer_.remove(states[i].path); !removed)
            return removed;
    }
    return {};
}

QString EarlierStates::pathFor(const QDateTime &saved) const
{
    QDateTime time = saved.toUTC();
    QString path;
    do {
        path = QDir(folder_).filePath(time.toString(utcStamp) + suffix);
        time = time.addMSecs(1);
    } while (QFileInfo::exists(path) || QFileInfo(path).isSymLink());
    return path;
}
