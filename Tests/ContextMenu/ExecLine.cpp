// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/ContextMenu/ExecLine.h"

std::optional<QByteArray> ExecLine::value(const QByteArray &entry, const QByteArray &group,
                                          const QByteArray &key)
{
    std::optional<QByteArray> found;
    QByteArray current;
    const QByteArrayList lines = entry.split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith('['))
            current = line;
        if (current != '[' + group + ']' || !line.startsWith(key + '='))
            continue;
        if (found)
            return std::nullopt;
        found = line.mid(key.size() + 1);
    }
    return found;
}

QByteArray ExecLine::string(const QByteArray &value)
{
    QByteArray result;
    for (qsizetype index = 0; index < value.size(); ++index) {
        if (value[index] != '\\' || index + 1 == value.size()) {
            result += value[index];
            continue;
        }
        const qsizetype code = QByteArrayView("sntr\\").indexOf(value[++index]);
        result += code < 0 ? '\\' : " \n\t\r\\"[code];
        if (code < 0)
            result += value[index];
    }
    return result;
}

std::optional<QByteArrayList> ExecLine::arguments(const QByteArray &value, const QByteArray &path)
{
    const QByteArray line = string(value);
    QByteArrayList arguments;
    for (qsizetype index = 0; index < line.size(); ++index) {
        QByteArray argument;
        if (line[index] == '"') {
            for (++index; index < line.size() && line[index] != '"'; ++index) {
                const bool isEscaped = line[index] == '\\';
                if (isEscaped && ++index == line.size())
                    return std::nullopt;
                // What has to be escaped is, and nothing else.
                if (QByteArrayView("\"`$\\").contains(line[index]) != isEscaped)
                    return std::nullopt;
                // A field code must not stand in quotes.
                if (line[index] == '%' && !isEscaped && line.mid(++index, 1) != "%")
                    return std::nullopt;
                argument += line[index];
            }
            if (index++ == line.size())
                return std::nullopt;
        } else {
            for (; index < line.size() && line[index] != ' '; ++index) {
                if (QByteArrayView("\t\n\"'\\><~|&;$*?#()`").contains(line[index]))
                    return std::nullopt;
                argument += line[index];
            }
            if (argument == "%f")
                argument = path;
            else if (argument.contains('%'))
                return std::nullopt;
        }
        if (index < line.size() && line[index] != ' ')
            return std::nullopt;
        arguments.append(argument);
    }
    return arguments;
}
