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
            other_ = name.isValidUtf16() ? name.toLower() : eachInLowerCase(name);
    }

    QStringView view() const { return other_.isNull() ? QStringView(ascii_) : QStringView(other_); }

private:
    /// The library's function makes one character of unpaired surrogates, but of which depends on what stands
    /// before them, and on its version.
    static QString eachInLowerCase(const QString &name)
    {
        QString result;
        for (qsizetype i = 0; i < name.size(); ++i) {
            const bool isPair =
                name[i].isHighSurrogate() && i + 1 < name.size() && name[i + 1].isLowSurrogate();
            if (isPair)
                result += name.mid(i++, 2).toLower();
            else
                result += name[i].isSurrogate() ? QString(name[i]) : QString(name[i]).toLower();
        }
        return result;
    }

    QVarLengthArray<char16_t, 128> ascii_;
    QString other_;
};
