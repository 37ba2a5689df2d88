// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Workspace.h"

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

} // namespace

bool Workspace::openURL(const QUrl &url)
{
    if (!isOpenable(url)) {
        qCWarning(lcWorkspace) << "not opened:" << url;
        return false;
    }
    QProcess process;
    process.setProgram(launcher);
    // Encoded it holds neither blanks nor control characters, and begins with a scheme, never with a dash.
    process.setArguments({url.toString(QUrl::FullyEncoded)});
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    if (!process.startDetached()) {
        qCWarning(lcWorkspace) << launcher << "could not be started:" << process.errorString();
        return false;
    }
    return true;
}

bool Workspace::openFile(const QString &path)
{
    const QFileInfo file(path);
    if (!file.exists()) {
        qCWarning(lcWorkspace) << "not opened, nothing is there:" << path;
        return false;
    }
    return openURL(QUrl::fromLocalFile(file.absoluteFilePath()));
}
