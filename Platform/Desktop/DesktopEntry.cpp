// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Platform/Desktop/DesktopEntry.h"

#include <algorithm>

namespace {

const QByteArray mainHeader = QByteArray("[") + DesktopEntryKeys::group + ']';

bool isBlank(char character)
{
    return character == ' ' || character == '\t' || character == '\n';
}

/// Without blanks before it. Those behind it belong to a value.
QByteArray withoutIndent(const QByteArray &text)
{
    qsizetype start = 0;
    while (start < text.size() && isBlank(text[start]))
        ++start;
    return text.mid(start);
}

QByteArray unescaped(const QByteArray &value)
{
    QByteArray result;
    result.reserve(value.size());
    for (qsizetype index = 0; index < value.size(); ++index) {
        if (value[index] != '\\' || index + 1 == value.size()) {
            result += value[index];
            continue;
        }
        const char code = value[++index];
        switch (code) {
        case 's':
            result += ' ';
            break;
        case 'n':
            result += '\n';
            break;
        case 't':
            result += '\t';
            break;
        case 'r':
            result += '\r';
            break;
        case '\\':
            result += '\\';
            break;
        default:
            // Not an escape; it means what it shows.
            result += '\\';
            result += code;
        }
    }
    return result;
}

QByteArray escaped(const QByteArray &value)
{
    QByteArray result = value;
    return result.replace('\\', "\\\\").replace('\n', "\\n").replace('\t', "\\t").replace('\r', "\\r");
}

/// The characters that a backslash stands before inside double quotes.
constexpr QByteArrayView quotable = "\"`$\\";

/// None if quotes are left open. The format knows double quotes only; those who start entries take
/// the command line for a shell's, without its expansions.
std::optional<QByteArray> firstArgument(const QByteArray &commandLine)
{
    const QByteArray line = withoutIndent(commandLine);
    QByteArray argument;
    char quote = 0;
    for (qsizetype index = 0; index < line.size(); ++index) {
        const char character = line[index];
        if (!quote && isBlank(character))
            return argument;
        if (quote ? character == quote : character == '"' || character == '\'') {
            quote = quote ? '\0' : character;
        } else if (character == '\\' && quote != '\'') {
            if (index + 1 == line.size())
                return std::nullopt;
            if (quote && !quotable.contains(line[index + 1]))
                argument += character;
            else
                argument += line[++index];
        } else {
            argument += character;
        }
    }
    return quote ? std::nullopt : std::optional(argument);
}

} // namespace

std::optional<DesktopEntry> DesktopEntry::parse(const QByteArray &bytes, QString *error)
{
    DesktopEntry entry;
    bool isInGroup = false;
    bool wasInGroup = false;
    int number = 0;
    const QList<QByteArray> lines = bytes.split('\n');
    for (QByteArray line : lines) {
        ++number;
        if (line.endsWith('\r'))
            line.chop(1);
        line = withoutIndent(line);
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        if (line.startsWith('[')) {
            const QByteArray header = line.trimmed();
            isInGroup = header == mainHeader;
            wasInGroup = wasInGroup || isInGroup;
            continue;
        }
        const qsizetype separator = line.indexOf('=');
        if (separator <= 0 || !wasInGroup) {
            *error = QStringLiteral("line %1 is not one of a desktop entry").arg(number);
            return std::nullopt;
        }
        if (isInGroup)
            entry.values_.insert(line.left(separator).trimmed(), withoutIndent(line.mid(separator + 1)));
    }
    if (!wasInGroup) {
        *error = QStringLiteral("no desktop entry");
        return std::nullopt;
    }
    return entry;
}

QByteArray DesktopEntry::string(const QByteArray &key) const
{
    return unescaped(values_.value(key));
}

bool DesktopEntry::boolean(const QByteArray &key) const
{
    const QByteArray value = values_.value(key).trimmed();
    return value == "true" || value == "1";
}

QByteArray DesktopEntry::program() const
{
    const std::optional<QByteArray> argument = firstArgument(string(DesktopEntryKeys::exec));
    if (!argument)
        return {};
    QByteArray program;
    for (qsizetype index = 0; index < argument->size(); ++index) {
        // A field code stands for what the program is to open, never for the program.
        if (argument->at(index) == '%' && (++index == argument->size() || argument->at(index) != '%'))
            return {};
        program += argument->at(index);
    }
    return program;
}

void DesktopEntry::appendString(QByteArray &entry, const QByteArray &key, const QByteArray &value)
{
    entry += key + '=' + escaped(value) + '\n';
}

QByteArray DesktopEntry::changed(const QByteArray &bytes, const QList<Change> &changes)
{
    QList<Change> pending = changes;
    const auto appendTaken = [&pending](QByteArray &entry, qsizetype index) {
        const Change change = pending.takeAt(index);
        if (change.value)
            appendString(entry, change.key, *change.value);
    };
    QByteArray result;
    // Up to the last line of the main group that says something.
    qsizetype end = -1;
    bool isInGroup = false;
    QByteArray rest = bytes;
    while (!rest.isEmpty()) {
        const qsizetype length = rest.indexOf('\n') + 1;
        const QByteArray line = length > 0 ? rest.left(length) : rest + '\n';
        rest = length > 0 ? rest.mid(length) : QByteArray();
        const QByteArray text = line.trimmed();
        if (text.startsWith('['))
            isInGroup = text == mainHeader;
        const QByteArray key = text.left(std::max<qsizetype>(text.indexOf('='), 0)).trimmed();
        const auto isOfKey = [&key](const Change &change) { return change.key == key; };
        if (isInGroup && std::any_of(changes.cbegin(), changes.cend(), isOfKey)) {
            const auto found = std::find_if(pending.cbegin(), pending.cend(), isOfKey);
            if (found != pending.cend())
                appendTaken(result, found - pending.cbegin());
        } else {
            result += line;
        }
        if (isInGroup && !text.isEmpty())
            end = result.size();
    }
    if (end == -1) {
        result += mainHeader + '\n';
        end = result.size();
    }
    QByteArray added;
    while (!pending.isEmpty())
        appendTaken(added, 0);
    return result.insert(end, added);
}

QByteArray DesktopEntry::quoted(const QByteArray &argument)
{
    QByteArray result = "\"";
    for (const char character : argument) {
        if (quotable.contains(character))
            result += '\\';
        if (character == '%')
            result += '%';
        result += character;
    }
    return result + '"';
}
