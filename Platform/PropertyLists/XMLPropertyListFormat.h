// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringView>

/// The elements of the XML property list.
namespace XMLPropertyListFormat {

inline constexpr QStringView plist = u"plist";
inline constexpr QStringView dictionary = u"dict";
inline constexpr QStringView array = u"array";
inline constexpr QStringView key = u"key";
inline constexpr QStringView string = u"string";
inline constexpr QStringView integer = u"integer";
inline constexpr QStringView real = u"real";
inline constexpr QStringView date = u"date";
inline constexpr QStringView data = u"data";
inline constexpr QStringView trueElement = u"true";
inline constexpr QStringView falseElement = u"false";

/// A date, where 0 stands for any digit: whole seconds, UTC.
inline constexpr QStringView datePattern = u"0000-00-00T00:00:00Z";

} // namespace XMLPropertyListFormat
