// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Hosting/TestBundle.h"

#include <QDir>
#include <QFile>

QString TestBundle::recordingPane()
{
    return QStringLiteral(QUENBY_RECORDING_PANE);
}

QString TestBundle::foreignPlugin()
{
    return QStringLiteral(QUENBY_FOREIGN_PLUGIN);
}

void TestBundle::make(const QString &path, const QString &code, const QString &title)
{
    const QByteArray information = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                                   "<key>CFBundleIdentifier</key><string>org.quenby.test</string>"
                                   "<key>CFBundleExecutable</key><string>Pane.so</string>"
                                   "<key>CFBundleName</key><string>" +
                                   title.toUtf8() + "</string></dict></plist>\n";
    writeInformation(path, information);
    const QString codeFolder = path + QStringLiteral("/Contents/MacOS");
    if (!QDir().mkpath(codeFolder) ||
        (!code.isEmpty() && !QFile::copy(code, codeFolder + QStringLiteral("/Pane.so"))))
        qFatal("no bundle at %s", qPrintable(path));
}

void TestBundle::writeInformation(const QString &path, const QByteArray &bytes)
{
    const QString folder = path + QStringLiteral("/Contents");
    QFile file(folder + QStringLiteral("/Info.plist"));
    if (!QDir().mkpath(folder) || !file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("no information file at %s", qPrintable(path));
}
