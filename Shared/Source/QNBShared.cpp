// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Shared/Source/QNBShared.h"

#include "Platform/Files/FileCatalog.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QStringList>

namespace {

/// The place of each is its number.
const QStringList &labelColors()
{
    static const QStringList names = {
        QString(),
        QStringLiteral("gray"),
        QStringLiteral("green"),
        QStringLiteral("purple"),
        QStringLiteral("blue"),
        QStringLiteral("yellow"),
        QStringLiteral("red"),
        QStringLiteral("orange"),
    };
    return names;
}

} // namespace

QString QNBApplicationSupportPath()
{
    static const QString path =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/Quenby");
    return path;
}

QString QNBProductIdentifier()
{
    return QStringLiteral(QUENBY_IDENTIFIER);
}

QString QNBHelperServiceName()
{
    return QStringLiteral("org.quenby.QNBHelper");
}

QString stringByRemovingCharactersInSet(const QString &string, QStringView characters)
{
    QString result = string;
    result.removeIf([characters](QChar unit) { return characters.contains(unit); });
    return result;
}

QString stringByDeletingFileSystemEntities(const QString &string)
{
    return stringByRemovingCharactersInSet(string, u"/~:");
}

quint64 QNBFinderLabelForColor(const QString &colorName)
{
    const qsizetype label = labelColors().indexOf(colorName);
    return label < 0 ? QNBNotFound : static_cast<quint64>(label);
}

QString QNBColorForFinderLabel(quint64 label)
{
    return label < static_cast<quint64>(labelColors().size())
               ? labelColors().at(static_cast<qsizetype>(label))
               : QString();
}

quint16 QNBFinderFlagsWithLabel(quint16 flags, quint64 label)
{
    const quint64 labelBits = (label << FinderInfo::labelShift) & FinderInfo::labelMask;
    return static_cast<quint16>((flags & ~FinderInfo::labelMask) | static_cast<quint16>(labelBits));
}

void QNBSetFinderLabelForPath(quint64 label, const QString &path)
{
    if (path.isEmpty())
        return;
    const QString absolutePath = path.startsWith(u'/') ? path : QDir::currentPath() + u'/' + path;
    const auto reference = FileCatalog::reference(QFile::encodeName(absolutePath));
    auto information = reference ? FileCatalog::finderInfo(*reference) : std::nullopt;
    if (!information)
        return;
    information->setFlags(QNBFinderFlagsWithLabel(information->flags(), label));
    FileCatalog::setFinderInfo(*reference, *information);
}

QNBButtonState QNBButtonStateForBool(bool value)
{
    return value ? QNBOnState : QNBOffState;
}

bool QNBBoolForButtonState(QNBButtonState state)
{
    return state == QNBOnState;
}

Qt::CheckState QNBCheckStateForButtonState(QNBButtonState state)
{
    switch (state) {
    case QNBMixedState:
        return Qt::PartiallyChecked;
    case QNBOffState:
        return Qt::Unchecked;
    case QNBOnState:
        break;
    }
    return Qt::Checked;
}

QNBButtonState QNBButtonStateForCheckState(Qt::CheckState state)
{
    switch (state) {
    case Qt::PartiallyChecked:
        return QNBMixedState;
    case Qt::Unchecked:
        return QNBOffState;
    case Qt::Checked:
        break;
    }
    return QNBOnState;
}
