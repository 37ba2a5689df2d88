// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/Workspace.h"

#include "Platform/Desktop/Bundle.h"
#include "Platform/Desktop/DesktopFolders.h"
#include "Platform/Processes/ChildEnvironment.h"

#include <QFileInfo>
#include <QLoggingCategory>
#include <QProcess>

namespace {

Q_LOGGING_CATEGORY(lcWorkspace, "quenby.platform.workspace")

const QString launcher = QStringLiteral("xdg-open");

/// Addresses that a desktop opens in a viewer; everything else could start anything.
bool isOpenable(const QUrl &url)
{
    if (!url.isValid() || url.isRelative())
        return false;
    const QString scheme = url.scheme();
    if (scheme == u"http" || scheme == u"https")
        return !url.host().isEmpty();
    if (scheme == u"mailto")
        return !url.path().isEmpty();
    return url.isLocalFile() && url.host().isEmpty() && url.path().startsWith(u'/');
}

/// By this path, so that the process has the name of the file. It leaves a session and a parent of its own
/// behind it.
bool startDetached(const QString &program, const QStringList &arguments, const QString &workingFolder = {})
{
    QProcess process;
    process.setProgram(program);
    process.setArguments(arguments);
    process.setWorkingDirectory(workingFolder);
    process.setProcessEnvironment(ChildEnvironment::variables());
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    if (process.startDetached())
        return true;
    qCWarning(lcWorkspace) << program << "could not be started:" << process.errorString();
    return false;
}

bool launchApplication(const QString &path)
{
    const std::optional<Bundle> bundle = Bundle::bundleWithPath(path);
    const QString executable = bundle ? bundle->executablePath() : QString();
    if (executable.isEmpty()) {
        qCWarning(lcWorkspace) << "not opened, an application without an executable:" << path;
        return false;
    }
    const QString home = DesktopFolders::home();
    return startDetached(executable, {}, QFileInfo(home).isDir() ? home : QStringLiteral("/"));
}

} // namespace

bool Workspace::openURL(const QUrl &url)
{
    if (!isOpenable(url)) {
        qCWarning(lcWorkspace) << "not opened:" << url;
        return false;
    }
    // Encoded it holds neither blanks nor control characters, and begins with a scheme, never with a dash.
    return startDetached(launcher, {url.toString(QUrl::FullyEncoded)});
}

bool Workspace::openFile(const QString &path)
{
    const QFileInfo file(path);
    if (!file.exists()) {
        qCWarning(lcWorkspace) << "not opened, nothing is there:" << path;
        return false;
    }
    if (Bundle::isApplicationBundle(path))
        return launchApplication(path);
    return openURL(QUrl::fromLocalFile(file.absoluteFilePath()));
}
