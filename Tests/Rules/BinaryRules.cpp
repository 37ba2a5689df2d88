// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Rules/BinaryRules.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <algorithm>

namespace {

bool has(const QString &description, const char *expression)
{
    return QRegularExpression(QString::fromLatin1(expression), QRegularExpression::MultilineOption)
        .match(description)
        .hasMatch();
}

} // namespace

QStringList BinaryRules::violationsOfLinking(const QString &description)
{
    QStringList violations;
    if (!has(description, "^ *Type: +DYN "))
        violations.append(QStringLiteral("it is loaded at an address that everybody knows (-pie)"));
    if (!has(description, "^ *GNU_RELRO "))
        violations.append(QStringLiteral("its tables of addresses stay writable (-z relro)"));
    if (!has(description, "\\(FLAGS_1\\).*\\bNOW\\b"))
        violations.append(QStringLiteral("it is bound while it runs (-z now)"));
    if (!has(description, "^ *GNU_STACK .* RW +0x[0-9a-f]+$"))
        violations.append(QStringLiteral("its stack can be executed"));
    return violations;
}

QStringList BinaryRules::violationsOfChecks(const QString &description)
{
    QStringList violations;
    if (!has(description, " UND __stack_chk_fail\\b"))
        violations.append(QStringLiteral("returns are not guarded (-fstack-protector-strong)"));
    if (!has(description, " UND __(?!stack)\\w+_chk\\b"))
        violations.append(QStringLiteral("sizes are not checked by the library (_FORTIFY_SOURCE)"));
    return violations;
}

QStringList BinaryRules::violationsOfControlFlow(const QByteArray &code)
{
    static const QByteArray endBranch("\xf3\x0f\x1e\xfa", 4);
    // What every program begins and ends with has some of its own.
    constexpr qsizetype mostOfOthers = 20;
    if (code.count(endBranch) > mostOfOthers)
        return {};
    return {QStringLiteral("indirect jumps may lead anywhere (-fcf-protection)")};
}

QStringList BinaryRules::violationsOfFlags(const QByteArray &commands, const QStringList &rooms,
                                           const QStringList &flags)
{
    QStringList violations;
    const QJsonArray entries = QJsonDocument::fromJson(commands).array();
    for (const QJsonValue &entry : entries) {
        const QString file = entry[QStringLiteral("file")].toString();
        if (std::none_of(rooms.begin(), rooms.end(),
                         [&](const QString &room) { return file.startsWith(room); }))
            continue;
        const QStringList words = entry[QStringLiteral("command")].toString().split(u' ');
        for (const QString &flag : flags) {
            if (!words.contains(flag))
                violations.append(QStringLiteral("%1 is compiled without %2").arg(file, flag));
        }
    }
    if (entries.isEmpty())
        violations.append(QStringLiteral("it is not known how anything is compiled"));
    return violations;
}
