// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/ScriptsFolder.h"

#include "ContextMenu/MenuText.h"

namespace {

/// Bytes; a file name has at most 255.
constexpr qsizetype longestName = 240;

/// The addresses are read rather than the paths that there are too: with several paths, one to a line, a path
/// that holds a line end cannot be told from two.
const char findFolders[] = R"(
# Sets $path to what the address $1 of a file stands for; fails if it is none of this machine.
decode() {
    case $1 in
    *\\*) return 1 ;;
    file:///*) rest=${1#file://} ;;
    *) return 1 ;;
    esac
    path=
    while :; do
        case $rest in
        *%*) path=$path${rest%%\%*} rest=${rest#*%} ;;
        *) break ;;
        esac
        case $rest in
        00*) return 1 ;;
        [0-9A-Fa-f][0-9A-Fa-f]*) ;;
        *) return 1 ;;
        esac
        code=$((0x${rest%"${rest#??}"})) rest=${rest#??}
        path=$path\\0$((code / 64))$((code / 8 % 8))$((code % 8))
    done
    # The dot keeps line ends at the end.
    path=$(printf '%b.' "$path$rest")
    path=${path%.}
}

set -f
IFS='
'
set --
for address in ${selected:-$current}; do
    decode "$address" || continue
    [ -d "$path" ] || path=${path%/*}
    for known do
        [ "$known" != "$path" ] || continue 2
    done
    set -- "$@" )";
const char start[] = R"( "${path:-/}"
done
[ $# -gt 0 ] || exit 1
exec)";

QString cut(QString name, qsizetype bytes)
{
    while (name.toUtf8().size() > bytes)
        name.chop(name.back().isLowSurrogate() ? 2 : 1);
    return name;
}

} // namespace

QString ScriptsFolder::fileName(const QString &title, QStringList &taken)
{
    QString name = title;
    name.replace(u'/', u'\u2215');
    // What it begins is replaced in the path by those who start the script.
    name.replace(u'%', u'\uFF05');
    // Such files are hidden, or taken for backups.
    if (name.startsWith(u'.'))
        name[0] = u'\u2024';
    if (name.endsWith(u'~'))
        name.back() = u'\u223C';
    const QString base = cut(name, longestName);
    name = base;
    for (int number = 2; taken.contains(name); ++number)
        name = base + u' ' + QString::number(number);
    taken.append(name);
    return name;
}

QByteArray ScriptsFolder::script(const QByteArrayList &commandLine, const QByteArray &prefix)
{
    QByteArray script = "#!/bin/sh\n"
                        "# Written by Quenby, which writes it again when its presets change.\n"
                        "\n"
                        "selected=$" +
                        prefix +
                        "_SCRIPT_SELECTED_URIS\n"
                        "current=$" +
                        prefix + "_SCRIPT_CURRENT_URI\n";
    script += findFolders + PresetMenu::folderOption + start;
    for (const QByteArray &word : commandLine)
        script += ' ' + MenuText::shellQuoted(word);
    return script + " \"$@\"\n";
}

QList<FileManagerWithFiles::File> ScriptsFolder::files(const PresetMenu &menu, const QString &scriptsFolder,
                                                       const QByteArray &prefix)
{
    const QString folder = scriptsFolder + u'/' + PresetMenu::title + u'/';
    QList<FileManagerWithFiles::File> files;
    QStringList taken;
    for (const PresetMenu::Item &item : menu.items)
        files.append({folder + fileName(item.title, taken), script(menu.commandLine(item), prefix), true});
    return files;
}
