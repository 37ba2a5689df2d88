// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/EndToEnd/DomainFile.h"

#include "Tests/Session/ChildProcess.h"

#include <QFile>
#include <QTemporaryFile>

#include <sys/stat.h>

namespace {

const QString python = QStringLiteral("python3");
const QString script = QStringLiteral(QUENBY_TEST_DATA "/domain.py");

} // namespace

DomainFile::DomainFile(const QString &configFolder)
    : path_(configFolder + QStringLiteral("/" QUENBY_IDENTIFIER ".plist"))
{
}

bool DomainFile::write(Form form) const
{
    ChildProcess writer(python,
                        {script, QStringLiteral("write"),
                         form == Form::XML ? QStringLiteral("xml") : QStringLiteral("binary"), path_});
    return writer.waitForEnd() && writer.hasReturned(0);
}

QByteArray DomainFile::differences() const
{
    ChildProcess checker(python, {script, QStringLiteral("check"), path_});
    if (!checker.waitForEnd())
        return "the check does not end";
    return checker.hasReturned(0) ? QByteArray() : checker.output() + checker.errors();
}

QByteArray DomainFile::differences(const QByteArray &expected, const QByteArray &found)
{
    QTemporaryFile files[2];
    QStringList arguments = {script, QStringLiteral("compare")};
    for (int index = 0; index < 2; ++index) {
        if (!files[index].open() || files[index].write(index == 0 ? expected : found) < 0 ||
            !files[index].flush())
            return "the contents cannot be written";
        arguments.append(files[index].fileName());
    }
    ChildProcess checker(python, arguments);
    if (!checker.waitForEnd())
        return "the comparison does not end";
    return checker.hasReturned(0) ? QByteArray() : checker.output() + checker.errors();
}

QByteArray DomainFile::bytes() const
{
    QFile file(path_);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList DomainFile::labels() const
{
    ChildProcess reader(python, {script, QStringLiteral("labels"), path_});
    reader.waitForEnd();
    return QString::fromUtf8(reader.output()).split(u'\n', Qt::SkipEmptyParts);
}

QByteArray DomainFile::value(const QString &key) const
{
    ChildProcess reader(python, {script, QStringLiteral("value"), path_, key});
    reader.waitForEnd();
    return reader.output().trimmed();
}

quint64 DomainFile::identity() const
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path_).constData(), &status) == 0 ? quint64(status.st_ino) : 0;
}
