// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/PropertyLists/PropertyList.h"

#include <QVariant>

/// Archives by hand, object by object, as other writers lay them out.
namespace ArchiveBuilder {

inline QVariant uid(quint64 number)
{
    return QVariant::fromValue(PropertyList::UID{number});
}

inline QVariantMap classNamed(const QStringList &names)
{
    QVariantList classes;
    for (const QString &name : names)
        classes.append(name);
    classes.append(QStringLiteral("NSObject"));
    return {{QStringLiteral("$classname"), names.first()}, {QStringLiteral("$classes"), classes}};
}

/// Object 0 is "$null", object 1 and on are \a objects.
inline QVariantMap archive(const QVariantList &objects,
                           const QVariantMap &top = {{QStringLiteral("root"), uid(1)}})
{
    return {{QStringLiteral("$version"), 100000LL},
            {QStringLiteral("$archiver"), QStringLiteral("NSKeyedArchiver")},
            {QStringLiteral("$top"), top},
            {QStringLiteral("$objects"), QVariantList{QStringLiteral("$null")} + objects}};
}

inline QByteArray bytesOf(const QVariantMap &archive)
{
    return PropertyList::write(archive).bytes.value_or(QByteArray());
}

/// Object 1, the root, is of a class with these names and has these fields; object 2 is the class and \a
/// others follow.
inline QByteArray object(const QStringList &classNames, QVariantMap fields, const QVariantList &others = {})
{
    fields.insert(QStringLiteral("$class"), uid(2));
    return bytesOf(archive(QVariantList{fields, classNamed(classNames)} + others));
}

/// \a levels arrays, each the only element of the one before.
inline QByteArray nestedArrays(int levels)
{
    QVariantList objects;
    for (int i = 1; i <= levels; ++i) {
        const QVariantList elements = i < levels ? QVariantList{uid(quint64(i) + 1)} : QVariantList{};
        objects.append(QVariantMap{{QStringLiteral("NS.objects"), elements},
                                   {QStringLiteral("$class"), uid(quint64(levels) + 1)}});
    }
    objects.append(classNamed({QStringLiteral("NSArray")}));
    return bytesOf(archive(objects));
}

} // namespace ArchiveBuilder
