// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "Platform/Preferences/KeyValueCoding.h"

#include <QVariantMap>
#include <memory>

inline const QString labelKey = QStringLiteral("label");

/// A record that is nothing but its attributes.
class FakeRecord final : public KeyValueCoding
{
public:
    static std::shared_ptr<FakeRecord> labelled(const QVariant &label)
    {
        auto record = std::make_shared<FakeRecord>();
        record->values.insert(labelKey, label);
        return record;
    }

    QVariant valueForKey(const QString &key) const override { return values.value(key); }
    void setValueForKey(const QVariant &value, const QString &key) override { values.insert(key, value); }

    QVariantMap values;
};
