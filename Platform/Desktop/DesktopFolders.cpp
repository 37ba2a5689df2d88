// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/DesktopFolders.h"

#include "Platform/Files/DurableFileWriter.h"
#include "Platform/Files/FileDescriptor.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

const QString homeVariable = QStringLiteral("HOME");
const QString configHomeVariable = QStringLiteral("XDG_CONFIG_HOME");
const QString dataHomeVariable = QStringLiteral("XDG_DATA_HOME");
const QString stateHomeVariable = QStringLiteral("XDG_STATE_HOME");
const QString runtimeDirectoryVariable = QStringLiteral("XDG_RUNTIME_DIR");
const QString productFolder = QStringLiteral("Quenby");
const QString runtimeFolder = QStringLiteral("Runtime");

/// The path in its shortest form if it is absolute, else empty. (QDir would take ":name" for absolute too.)
QString absoluteOnly(const QString &path)
{
    return path.startsWith(u'/') ? QDir::cleanPath(path) : QString();
}

QString folderVariable(const QProcessEnvironment &environment, const QString &name)
{
    return absoluteOnly(environment.value(name));
}

QString homeFromPasswordDatabase()
{
    std::vector<char> buffer(1024);
    passwd entry = {};
    passwd *found = nullptr;
    while (::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE)
        buffer.resize(2 * buffer.size());
    return found ? absoluteOnly(QFile::decodeName(found->pw_dir)) : QString();
}

QString belowHome(const QProcessEnvironment &environment, const QString &variable,
                  QLatin1StringView byDefault)
{
    if (QString folder = folderVariable(environment, variable); !folder.isEmpty())
        return folder;
    const QString home = DesktopFolders::home(environment);
    return home.isEmpty() ? QString() : QDir(home).filePath(byDefault);
}

bool isPrivateFolder(const QString &path)
{
    struct stat information = {};
    return ::lstat(QFile::encodeName(path).constData(), &information) == 0 && S_ISDIR(information.st_mode) &&
           information.st_uid == ::geteuid() && (information.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

/// Closes to others a folder, no link to one, of the user's own.
bool makePrivate(const QString &path)
{
    FileLayer &layer = FileLayer::real();
    const FileDescriptor folder(layer,
                                layer.open(QFile::encodeName(path), O_RDONLY | O_DIRECTORY | O_NOFOLLOW));
    struct stat information = {};
    return folder.isOpen() && layer.fstat(folder.get(), &information) == 0 &&
           information.st_uid == ::geteuid() && layer.fchmod(folder.get(), S_IRWXU) == 0;
}

} // namespace

QString DesktopFolders::home(const QProcessEnvironment &environment)
{
    const QString folder = folderVariable(environment, homeVariable);
    return folder.isEmpty() ? homeFromPasswordDatabase() : folder;
}

QString DesktopFolders::configHome(const QProcessEnvironment &environment)
{
    return belowHome(environment, configHomeVariable, QLatin1StringView(".config"));
}

QString DesktopFolders::dataHome(const QProcessEnvironment &environment)
{
    return belowHome(environment, dataHomeVariable, QLatin1StringView(".local/share"));
}

QString DesktopFolders::stateHome(const QProcessEnvironment &environment)
{
    return belowHome(environment, stateHomeVariable, QLatin1StringView(".local/state"));
}

QString DesktopFolders::stateFolder(const QProcessEnvironment &environment)
{
    const QString folder = stateHome(environment);
    return folder.isEmpty() ? QString() : QDir(folder).filePath(productFolder);
}

QString DesktopFolders::runtimeDirectory(const QProcessEnvironment &environment)
{
    const QString user = QString::number(::geteuid());
    for (const QString &folder :
         {folderVariable(environment, runtimeDirectoryVariable), QStringLiteral("/run/user/%1").arg(user)}) {
        if (!folder.isEmpty() && isPrivateFolder(folder))
            return folder;
    }
    return ownRuntimeFolder(environment);
}

bool DesktopFolders::isOthers(const QString &path)
{
    struct stat information = {};
    QString present = path;
    while (::stat(QFile::encodeName(present).constData(), &information) == -1) {
        if (errno != ENOENT || present == u"/")
            return false;
        present = QFileInfo(present).path();
    }
    return information.st_uid != ::geteuid() && information.st_uid != 0;
}

QString DesktopFolders::ownRuntimeFolder(const QProcessEnvironment &environment)
{
    const QString state = stateFolder(environment);
    const QString folder = state.isEmpty() ? QString() : QDir(state).filePath(runtimeFolder);
    if (folder.isEmpty() || isOthers(folder) || !DurableFileWriter().makeFolder(folder))
        return {};
    return isPrivateFolder(folder) || makePrivate(folder) ? folder : QString();
}
