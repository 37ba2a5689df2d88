// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Console.h"
#include "Platform/LineText.h"

#include <QCoreApplication>

#include <cstdio>
#include <unistd.h>

namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("CommandLine", text);
}

bool write(std::FILE *stream, const QByteArray &bytes)
{
    return std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stream) == std::size_t(bytes.size());
}

} // namespace

void Console::print(const QString &text)
{
    print(text.toUtf8());
}

void Console::print(const QByteArray &bytes)
{
    hasPrinted_ = write(stdout, bytes) && hasPrinted_;
}

void Console::printLine(const QString &line)
{
    print(lineText(line) + u'\n');
}

void Console::tell(const QString &message)
{
    // In the order in which it happened, should both go to one place.
    std::fflush(stdout);
    write(stderr, lineText(message).toUtf8() + '\n');
}

bool Console::canAsk() const
{
    return ::isatty(STDIN_FILENO) && ::isatty(STDERR_FILENO);
}

bool Console::ask(const QString &text, const QString &question)
{
    std::fflush(stdout);
    write(stderr, (text + question + tr(" [y/N] ")).toUtf8());
    QByteArray answer;
    for (int character = std::getchar(); character != EOF && character != '\n'; character = std::getchar())
        answer.append(char(character));
    const QString word = QString::fromUtf8(answer).trimmed().toLower();
    return word == tr("y") || word == tr("yes");
}

bool Console::finish()
{
    return std::fflush(stdout) == 0 && hasPrinted_;
}
