// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Host/WindowPlaces.h"

#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/Files/DurableFileWriter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSettings>

namespace {

Q_LOGGING_CATEGORY(lcPlaces, "quenby.host.places")

const QString fileName = QStringLiteral("preferences.ini");
/// In the folder for the state of all programs; the first version had the file there.
const QString earlierFolder = QStringLiteral("quenby");

/// Slashes make groups in a settings file.
QString placeKey(const QString &panePath)
{
    return QStringLiteral("place/") + QFileInfo(panePath).completeBaseName();
}

/// Makes the file at \a path if there is none. The library would let everybody read it.
Result<> makeFile(const QString &path)
{
    if (QFile::exists(path))
        return {};
    const DurableFileWriter writer;
    if (Result<> made = writer.makeFolder(QFileInfo(path).path()); !made)
        return made;
    return writer.write(path, {});
}

Result<> written(QSettings &settings)
{
    settings.sync();
    if (settings.status() == QSettings::NoError)
        return {};
    return Result<>::failure(settings.fileName() + QStringLiteral(" cannot be written"));
}

/// Moves the values of the file \a from to the file \a to, and removes it, and its folder if that is empty
/// then.
Result<> takeOver(const QString &from, const QString &to)
{
    if (Result<> made = makeFile(to); !made)
        return made;
    const QSettings earlier(from, QSettings::IniFormat);
    QSettings now(to, QSettings::IniFormat);
    const QStringList keys = earlier.allKeys();
    for (const QString &key : keys)
        now.setValue(key, earlier.value(key));
    if (Result<> moved = written(now); !moved)
        return moved;
    const Result<> removed = DurableFileWriter().remove(from);
    const QString folder = QFileInfo(from).path();
    QDir().rmdir(folder);
    return removed;
}

/// The path of the file, which need not exist; empty without a home.
QString filePath()
{
    const QString folder = DesktopFolders::stateFolder();
    if (folder.isEmpty())
        return {};
    const QString path = QDir(folder).filePath(fileName);
    const QString earlier = QDir(DesktopFolders::stateHome()).filePath(earlierFolder + u'/' + fileName);
    if (QFile::exists(path) || !QFile::exists(earlier))
        return path;
    const Result<> taken = takeOver(earlier, path);
    if (taken)
        return path;
    qCWarning(lcPlaces) << "not taken over:" << taken.error;
    return earlier;
}

} // namespace

QByteArray WindowPlaces::placeOf(const QString &panePath)
{
    const QString path = filePath();
    if (path.isEmpty())
        return {};
    return QSettings(path, QSettings::IniFormat).value(placeKey(panePath)).toByteArray();
}

Result<> WindowPlaces::remember(const QString &panePath, const QByteArray &place)
{
    const QString path = filePath();
    if (path.isEmpty())
        return Result<>::failure(QStringLiteral("there is no home to write into"));
    if (Result<> made = makeFile(path); !made)
        return made;
    QSettings settings(path, QSettings::IniFormat);
    settings.setValue(placeKey(panePath), place);
    return written(settings);
}
