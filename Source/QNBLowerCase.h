// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QVarLengthArray>
#include <algorithm>

/// A name in lower case, without an allocation for most.
class QNBLowerCase
{
public:
    explicit QNBLowerCase(const QString &name)
    {
        char16_t all = 0;
        ascii_.resize(name.size());
        std::transform(name.begin(), name.end(), ascii_.begin(), [&all](QChar character) {
            const char16_t c = character.unicode();
            all |= c;
            return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + (u'a' - u'A')) : c;
        });
        constexpr char16_t firstBeyondAscii = 0x80;
        if (all >= firstBeyondAscii)
            other_ = name.toLower();
    }

    QStringView view() const { return other_.isNull() ? QStringView(ascii_) : QStringView(other_); }

private:
    QVarLengthArray<char16_t, 128> ascii_;
    QString other_;
};
