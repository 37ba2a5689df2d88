// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Rules/SourceTree.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

namespace {

const QString top = QStringLiteral(QUENBY_SOURCE_TREE);

bool isOurs(const QString &path)
{
    static const QRegularExpression text(
        QStringLiteral("\\.(h|cpp|m|py|sh|cmake|in)\\z|/CMakeLists\\.txt\\z"));
    static const QRegularExpression script(QStringLiteral("\\A(scripts|\\.ci)/[^./]+\\z"));
    static const QRegularExpression data(QStringLiteral("/(data|corpus|QNB Default AppSupport)/"));
    return (text.match(path).hasMatch() || script.match(path).hasMatch()) && !data.match(path).hasMatch();
}

} // namespace

QList<Include> includesOf(const SourceFile &file)
{
    static const QRegularExpression directive(
        QStringLiteral("^[ \\t]*#[ \\t]*include[ \\t]*([\"<])([^\">\\n]+)[\">]"),
        QRegularExpression::MultilineOption);
    QList<Include> includes;
    auto matches = directive.globalMatch(file.text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        const auto line = QStringView(file.text).left(match.capturedStart(1)).count(u'\n') + 1;
        includes.append({int(line), match.captured(2), match.captured(1) == u"\""});
    }
    return includes;
}

const QStringList &SourceTree::folders()
{
    static const QStringList names = {
        QStringLiteral("Platform"), QStringLiteral("Keyboard"),    QStringLiteral("Shared"),
        QStringLiteral("Source"),   QStringLiteral("Toolkit"),     QStringLiteral("Resources"),
        QStringLiteral("Hosting"),  QStringLiteral("Host"),        QStringLiteral("SystemSettings"),
        QStringLiteral("Helper"),   QStringLiteral("ContextMenu"), QStringLiteral("Tests"),
        QStringLiteral("Fuzz"),     QStringLiteral("Benchmarks"),  QStringLiteral("cmake"),
        QStringLiteral("scripts"),  QStringLiteral(".ci")};
    return names;
}

QList<SourceFile> SourceTree::files()
{
    QStringList paths = {QStringLiteral("CMakeLists.txt")};
    const QDir tree(top);
    for (const QString &folder : folders()) {
        QDirIterator walk(tree.filePath(folder), QDir::Files, QDirIterator::Subdirectories);
        while (walk.hasNext()) {
            const QString path = tree.relativeFilePath(walk.next());
            if (isOurs(path))
                paths.append(path);
        }
    }
    paths.sort();
    QList<SourceFile> files;
    for (const QString &path : std::as_const(paths))
        files.append(file(path));
    return files;
}

SourceFile SourceTree::file(const QString &path)
{
    QFile source(top + u'/' + path);
    if (!source.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(source.fileName()));
    return {path, QString::fromUtf8(source.readAll())};
}
