// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QVariant>

/// An object whose attributes are read and set by name: what lists, fields and their controllers need to know
/// of the records that they show.
class KeyValueCoding
{
public:
    virtual ~KeyValueCoding() = default;
    /// The value under \a key; invalid when there is none.
    virtual QVariant valueForKey(const QString &key) const = 0;
    /// An invalid value removes the key.
    virtual void setValueForKey(const QVariant &value, const QString &key) = 0;
};
