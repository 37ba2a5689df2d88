// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Creation/ItemName.h"
#include "Platform/LineText.h"

namespace Creation {

QString ItemName::problem(const QString &name, const QByteArray &bytes)
{
    if (name.isEmpty())
        return QStringLiteral("the name is empty");
    if (name == u"." || name == u"..")
        return QStringLiteral("the name “%1” means a folder that is there already").arg(name);
    if (bytes.contains('/'))
        return QStringLiteral("the name contains “/”");
    if (bytes.contains('\0'))
        return QStringLiteral("the name contains a null character");
    if (bytes.size() > mostBytes)
        return QStringLiteral("the name is longer than the %1 bytes that are possible").arg(mostBytes);
    if (!name.isValidUtf16())
        return QStringLiteral("the name contains half a character");
    return {};
}

QString ItemName::shownPath(const QList<QString> &components, bool isCut)
{
    QString path = isCut ? QStringLiteral("…/") : QString();
    for (auto component = components.crbegin(); component != components.crend(); ++component) {
        if (component != components.crbegin())
            path += u'/';
        path += *component;
    }
    return lineText(path);
}

QString ItemName::shownName(const QString &name)
{
    return lineText(name.size() > mostShown ? name.left(mostShown) + u'…' : name);
}

} // namespace Creation
