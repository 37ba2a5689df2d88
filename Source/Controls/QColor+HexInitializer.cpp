// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Source/Controls/QColor+HexInitializer.h"

#include <QStringView>
#include <algorithm>
#include <array>
#include <limits>

namespace {

constexpr std::array prefixes = {u"0x", u"0X"};

int digitValue(QChar character)
{
    constexpr QStringView digits = u"0123456789abcdef";
    return static_cast<int>(digits.indexOf(character.toLower()));
}

/// 32 bits; a number that needs more counts as the largest.
quint32 scanHexInt(QStringView string)
{
    constexpr quint64 largest = std::numeric_limits<quint32>::max();
    const bool isPrefixed = std::any_of(prefixes.begin(), prefixes.end(), [string](const char16_t *prefix) {
        return string.startsWith(prefix);
    });
    quint64 value = 0;
    for (const QChar character : string.sliced(isPrefixed ? 2 : 0)) {
        const int digit = digitValue(character);
        if (digit < 0)
            break;
        value = std::min(largest, value * 16 + static_cast<quint64>(digit));
    }
    return static_cast<quint32>(value);
}

float component(quint32 value, int shift)
{
    return static_cast<float>((value >> shift) & 255U) / 255.0F;
}

} // namespace

QColor colorFromHexRGB(const QString &hexadecimal)
{
    const quint32 value = scanHexInt(hexadecimal);
    return QColor::fromRgbF(component(value, 16), component(value, 8), component(value, 0), 1.0F);
}
