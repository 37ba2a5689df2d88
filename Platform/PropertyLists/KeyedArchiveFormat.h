// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringView>
#include <QtGlobal>

/// Names and rules that the reader and the writer of keyed archives share.
///
/// A keyed archive is a property list whose "$objects" hold every object of a graph once. Objects refer to
/// each other by position (UID); position 0 is null. Strings, numbers, booleans and data stand there as they
/// are; any other object is a dictionary of its fields, of which "$class" refers to the description of its
/// class: the class's name and those of its superclasses.
namespace KeyedArchiveFormat {

inline constexpr qint64 version = 100000;

inline constexpr QStringView versionKey = u"$version";
inline constexpr QStringView archiverKey = u"$archiver";
inline constexpr QStringView archiverName = u"NSKeyedArchiver";
inline constexpr QStringView topKey = u"$top";
inline constexpr QStringView rootKey = u"root";
inline constexpr QStringView objectsKey = u"$objects";

inline constexpr QStringView classKey = u"$class";
inline constexpr QStringView classNameKey = u"$classname";
inline constexpr QStringView classesKey = u"$classes";

/// What stands at position 0. As a string of its own it must be written as the field of a string object.
inline constexpr QStringView nullMarker = u"$null";

inline constexpr QStringView keysField = u"NS.keys";
inline constexpr QStringView objectsField = u"NS.objects";
inline constexpr QStringView stringField = u"NS.string";
inline constexpr QStringView bytesField = u"NS.bytes";
inline constexpr QStringView dataField = u"NS.data";
inline constexpr QStringView timeField = u"NS.time";
/// The first unnamed field: the seconds of a calendar date.
inline constexpr QStringView firstField = u"$0";
inline constexpr QStringView numberField = u"NS.number";
inline constexpr QStringView integerField = u"NS.intval";
inline constexpr QStringView realField = u"NS.dblval";
inline constexpr QStringView booleanField = u"NS.boolval";
/// Older writers give every entry a field of its own: "NS.object.0", "NS.object.1", … and "NS.key.0", ….
inline constexpr QStringView numberedObjectPrefix = u"NS.object.";
inline constexpr QStringView numberedKeyPrefix = u"NS.key.";

/// How a reference is spelled where the form has no references (XML): `{CF$UID: n}`.
inline constexpr QStringView referenceKey = u"CF$UID";

inline constexpr QStringView objectClass = u"NSObject";
inline constexpr QStringView dictionaryClass = u"NSDictionary";
inline constexpr QStringView mutableDictionaryClass = u"NSMutableDictionary";
inline constexpr QStringView arrayClass = u"NSArray";
inline constexpr QStringView mutableArrayClass = u"NSMutableArray";
inline constexpr QStringView setClass = u"NSSet";
inline constexpr QStringView mutableSetClass = u"NSMutableSet";
inline constexpr QStringView orderedSetClass = u"NSOrderedSet";
inline constexpr QStringView mutableOrderedSetClass = u"NSMutableOrderedSet";
inline constexpr QStringView stringClass = u"NSString";
inline constexpr QStringView mutableStringClass = u"NSMutableString";
inline constexpr QStringView dataClass = u"NSData";
inline constexpr QStringView mutableDataClass = u"NSMutableData";
inline constexpr QStringView dateClass = u"NSDate";
inline constexpr QStringView nullClass = u"NSNull";
inline constexpr QStringView numberClass = u"NSNumber";

/// The names that the description of a class may have, its own and those above it: looked through for each
/// class, they may be shared by very many. Real ones have a handful.
inline constexpr qsizetype mostClassNames = 64;

} // namespace KeyedArchiveFormat
