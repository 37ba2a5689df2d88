// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Session/TestApplication.h"

#include "Tests/Session/ChildProcess.h"

#include <QDir>
#include <QFile>

namespace {

const QString codeFolder = QStringLiteral("/Contents/MacOS/");

// The record holds texts that end in NUL, the arguments last, and appears as a whole.
const QByteArray script = R"script(#!/bin/sh
record=%RECORD%
read -r name < "/proc/$$/comm"
read -r stat < "/proc/$$/stat"
set -- "$0" "$name" "$(pwd; echo .)" "$(readlink "/proc/$$/fd/0")" "$(readlink "/proc/$$/fd/1")" \
    "$(readlink "/proc/$$/fd/2")" "$$" "${stat##*) }" "$@"
printf '%s\0' "$@" > "$record.new"
mv "$record.new" "$record"
)script";

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("%s: %s", qPrintable(path), qPrintable(file.errorString()));
}

} // namespace

TestApplication::TestApplication(const QString &path, const QString &executable)
    : path_(path)
    , executable_(path + codeFolder + executable)
{
    makeBundle(path, executable);
    write(executable_, QByteArray(script).replace("%RECORD%", QFile::encodeName(record())));
    QFile::setPermissions(executable_, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

void TestApplication::makeBundle(const QString &path, const QString &executable)
{
    if (!QDir().mkpath(path + codeFolder))
        qFatal("%s cannot be made", qPrintable(path));
    write(path + QStringLiteral("/Contents/Info.plist"),
          "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
          "<key>CFBundleExecutable</key><string>" +
              executable.toHtmlEscaped().toUtf8() + "</string></dict></plist>\n");
}

std::optional<TestApplication::Start> TestApplication::start() const
{
    if (!waitUntil([this] { return wasStarted(); }))
        return std::nullopt;
    QFile file(record());
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QList<QByteArray> fields = file.readAll().split('\0');
    fields.removeLast();
    // State, parent, group, session and more.
    constexpr qsizetype fixedFields = 8;
    if (fields.size() < fixedFields)
        return std::nullopt;
    const QList<QByteArray> stat = fields[7].split(' ');
    // "pwd" ends its line, which the shell would take away together with line ends of the folder's own.
    const QByteArray folder = fields[2].chopped(2);
    return Start{.program = fields[0],
                 .processName = fields[1],
                 .arguments = fields.mid(fixedFields),
                 .folder = folder,
                 .standardFiles = fields.mid(3, 3),
                 .process = fields[6].toLongLong(),
                 .parent = stat.value(1).toLongLong(),
                 .session = stat.value(3).toLongLong()};
}

bool TestApplication::wasStarted() const
{
    return QFile::exists(record());
}
