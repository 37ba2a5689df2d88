// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/PaneCopy.h"

#include <QFile>

#include <filesystem>
#include <gtest/gtest.h>

namespace {

const QByteArray helperInformation = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>CFBundleExecutable</key><string>QNBHelper</string>
<key>CFBundleIdentifier</key><string>org.quenby.QNBHelper</string>
<key>CFBundleName</key><string>QNBHelper</string>
<key>CFBundlePackageType</key><string>APPL</string>
</dict></plist>)";

const QByteArray contextMenuInformation = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>CFBundleExecutable</key><string>QNBContextMenu</string>
<key>CFBundleIdentifier</key><string>org.quenby.QNBContextMenu</string>
<key>CFBundleShortVersionString</key><string>%1</string>
</dict></plist>)";

const QByteArray contextMenuProgram = R"(#!/bin/sh
printf '%s\n' "$@" >>"$QUENBY_PLUG_IN_REPORT"
entries="$QUENBY_PLUG_IN_REPORT.entries"
case $1 in
list) if [ -e "$entries" ]; then printf 'Thunar\tyes\n'; else printf 'Thunar\tno\n'; fi ;;
register) : >"$entries" ;;
unregister) rm -f "$entries" ;;
esac
)";

void write(const QString &path, const QByteArray &bytes)
{
    std::filesystem::create_directories(std::filesystem::path(path.toStdString()).parent_path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

std::filesystem::path native(const QString &path)
{
    return path.toStdString();
}

} // namespace

PaneCopy::PaneCopy(const QString &folder)
    : path_(folder + QStringLiteral("/Quenby.prefPane"))
{
    const std::filesystem::path built = native(QStringLiteral(QUENBY_BUNDLE "/Contents"));
    const std::filesystem::path copy = native(path_ + QStringLiteral("/Contents"));
    std::filesystem::create_directories(copy);
    std::filesystem::copy_file(built / "Info.plist", copy / "Info.plist");
    std::filesystem::copy(built / "Resources", copy / "Resources", std::filesystem::copy_options::recursive);
    // The programs that it carries are in folders.
    std::filesystem::copy(built / "MacOS", copy / "MacOS");
}

QString PaneCopy::helperPath() const
{
    return path_ + QStringLiteral("/Contents/MacOS/QNBHelper.app");
}

QString PaneCopy::helperProgram() const
{
    return helperPath() + QStringLiteral("/Contents/MacOS/QNBHelper");
}

QString PaneCopy::builtHelperProgram()
{
    return QStringLiteral(QUENBY_BUNDLE "/Contents/MacOS/QNBHelper.app/Contents/MacOS/QNBHelper");
}

void PaneCopy::addHelper() const
{
    write(helperPath() + QStringLiteral("/Contents/Info.plist"), helperInformation);
    std::filesystem::create_directories(native(helperProgram()).parent_path());
    std::filesystem::copy_file(native(QStringLiteral(QUENBY_STAND_IN_HELPER)), native(helperProgram()));
}

void PaneCopy::addCompanions() const
{
    const std::filesystem::path built = native(QStringLiteral(QUENBY_BUNDLE "/Contents/MacOS"));
    for (const QString &companion : {helperPath(), contextMenuPath()})
        std::filesystem::copy(built / native(companion).filename(), native(companion),
                              std::filesystem::copy_options::recursive);
}

QString PaneCopy::contextMenuPath() const
{
    return path_ + QStringLiteral("/Contents/MacOS/QNBContextMenu.plugin");
}

void PaneCopy::addContextMenu() const
{
    // The plug-in has the pane's version.
    write(contextMenuPath() + QStringLiteral("/Contents/Info.plist"),
          QByteArray(contextMenuInformation).replace("%1", QUENBY_VERSION));
    const QString program = contextMenuPath() + QStringLiteral("/Contents/MacOS/QNBContextMenu");
    write(program, contextMenuProgram);
    std::filesystem::permissions(native(program), std::filesystem::perms::owner_exec,
                                 std::filesystem::perm_options::add);
}
