// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Fuzz/RandomRecords.h"

#include <QtEndian>

#include <iterator>
#include <utility>

namespace {

using Node = RandomRecords::Node;

constexpr unsigned deepest = 6;

template <typename Number>
QByteArray bigEndian(Number number)
{
    QByteArray bytes(sizeof number, Qt::Uninitialized);
    qToBigEndian(number, bytes.data());
    return bytes;
}

/// What begins a value of the binary format that has a length.
QByteArray head(unsigned kind, std::size_t length)
{
    constexpr std::size_t inOneByte = 15;
    if (length < inOneByte)
        return QByteArray(1, char(kind << 4 | length));
    return QByteArray(1, char(kind << 4 | inOneByte)) + '\x12' + bigEndian(quint32(length));
}

Node ascii(const QByteArray &text)
{
    return {.xml = "<string>" + text + "</string>", .binary = head(5, std::size_t(text.size())) + text};
}

Node integer(quint8 number)
{
    return {.xml = "<integer>" + QByteArray::number(number) + "</integer>",
            .binary = QByteArray(1, '\x10') + char(number)};
}

/// The number of an object in an archive.
Node reference(std::size_t number)
{
    return {.xml = "<dict><key>CF$UID</key><integer>" + QByteArray::number(qulonglong(number)) +
                   "</integer></dict>",
            .binary = QByteArray(1, '\x83') + bigEndian(quint32(number))};
}

Node array(std::vector<Node> values)
{
    return {.kind = Node::Kind::Array, .values = std::move(values)};
}

Node dictionary(std::vector<std::pair<QByteArray, Node>> entries)
{
    Node node{.kind = Node::Kind::Dictionary};
    for (auto &[key, value] : entries) {
        node.keys.push_back(key);
        node.values.push_back(std::move(value));
    }
    return node;
}

QByteArray xmlOf(const Node &node)
{
    if (node.kind == Node::Kind::Scalar)
        return node.xml;
    const bool isArray = node.kind == Node::Kind::Array;
    QByteArray xml = isArray ? "<array>" : "<dict>";
    for (std::size_t i = 0; i < node.values.size(); ++i) {
        if (!isArray)
            xml += "<key>" + node.keys[i] + "</key>";
        xml += xmlOf(node.values[i]);
    }
    return xml + (isArray ? "</array>" : "</dict>");
}

/// Appends the object of \a node, after those of its parts, and returns its number.
quint32 addBinary(const Node &node, std::vector<QByteArray> &objects)
{
    QByteArray bytes = node.binary;
    if (node.kind != Node::Kind::Scalar) {
        bytes = head(node.kind == Node::Kind::Array ? 0xA : 0xD, node.values.size());
        for (const QByteArray &key : node.keys)
            bytes += bigEndian(addBinary(ascii(key), objects));
        for (const Node &value : node.values)
            bytes += bigEndian(addBinary(value, objects));
    }
    objects.push_back(bytes);
    return quint32(objects.size() - 1);
}

QByteArray binaryOf(const Node &node)
{
    std::vector<QByteArray> objects;
    const quint64 top = addBinary(node, objects);
    QByteArray bytes = "bplist00";
    QByteArray offsets;
    for (const QByteArray &object : objects) {
        offsets += bigEndian(quint32(bytes.size()));
        bytes += object;
    }
    const auto table = quint64(bytes.size());
    const QByteArray sizes = QByteArray(6, '\0') + char(sizeof(quint32)) + char(sizeof(quint32));
    return bytes + offsets + sizes + bigEndian(quint64(objects.size())) + bigEndian(top) + bigEndian(table);
}

RandomRecords::Document documentOf(const Node &node)
{
    return {"<plist>" + xmlOf(node) + "</plist>", binaryOf(node)};
}

Node classNamed(const QByteArray &name)
{
    return dictionary({{"$classname", ascii(name)}, {"$classes", array({ascii(name), ascii("NSObject")})}});
}

/// Appends the objects that an archive keeps of \a node, and returns what names the first.
Node addArchived(const Node &node, std::vector<Node> &objects)
{
    const std::size_t number = objects.size();
    objects.push_back(node);
    if (node.kind == Node::Kind::Scalar)
        return reference(number);
    std::vector<Node> keys;
    for (const QByteArray &key : node.keys)
        keys.push_back(addArchived(ascii(key), objects));
    std::vector<Node> values;
    for (const Node &value : node.values)
        values.push_back(addArchived(value, objects));
    const bool isArray = node.kind == Node::Kind::Array;
    const Node isa = reference(objects.size());
    objects.push_back(classNamed(isArray ? "NSMutableArray" : "NSMutableDictionary"));
    objects[number] =
        isArray ? dictionary({{"NS.objects", array(values)}, {"$class", isa}})
                : dictionary({{"NS.keys", array(keys)}, {"NS.objects", array(values)}, {"$class", isa}});
    return reference(number);
}

} // namespace

RandomRecords::RandomRecords(unsigned seed)
    : random_(seed)
{
}

RandomRecords::Document RandomRecords::domain()
{
    std::vector<Node> records;
    for (unsigned i = pick(4); i > 0; --i)
        records.push_back(pick(8) == 0 ? value(0) : record());
    Node code = value(0);
    Node flags = value(0);
    return documentOf(dictionary({{"QNBPresetsStored", dictionary({{"loaded", integer(1)}})},
                                  {"QNBHotKeyCode", std::move(code)},
                                  {"QNBHotKeyFlags", std::move(flags)},
                                  {"QNBPresets", array(std::move(records))}}));
}

RandomRecords::Document RandomRecords::bareArchive()
{
    return documentOf(
        dictionary({{"$top", dictionary({{"root", record()}})}, {"$objects", array({ascii("$null")})}}));
}

RandomRecords::Document RandomRecords::archive()
{
    std::vector<Node> objects{ascii("$null")};
    const Node root = addArchived(record(), objects);
    return documentOf(dictionary(
        {{"$version", {.xml = "<integer>100000</integer>", .binary = '\x12' + bigEndian(quint32(100'000))}},
         {"$archiver", ascii("NSKeyedArchiver")},
         {"$top", dictionary({{"root", root}})},
         {"$objects", array(std::move(objects))}}));
}

Node RandomRecords::record()
{
    static constexpr const char *keys[] = {"label", "scriptFile", "extra", "fileHierarchy"};
    std::vector<std::pair<QByteArray, Node>> entries;
    for (unsigned i = 1 + pick(6); i > 0; --i) {
        const unsigned key = pick(std::size(keys));
        const bool isTree = key == 3 && pick(6) != 0;
        entries.emplace_back(keys[key], isTree ? item(0) : value(0));
    }
    return dictionary(std::move(entries));
}

Node RandomRecords::item(unsigned depth)
{
    static constexpr const char *keys[] = {"filename",        "isFolder",    "color",
                                           "contentFilename", "permissions", "uid",
                                           "other",           "children",    "children"};
    std::vector<std::pair<QByteArray, Node>> entries;
    for (unsigned i = pick(8); i > 0; --i) {
        const unsigned key = pick(std::size(keys));
        const bool hasChildren = key >= 7 && depth < deepest && pick(6) != 0;
        entries.emplace_back(keys[key], hasChildren ? items(depth + 1) : value(depth + 1));
    }
    return dictionary(std::move(entries));
}

Node RandomRecords::items(unsigned depth)
{
    std::vector<Node> values;
    for (unsigned i = pick(5); i > 0; --i)
        values.push_back(pick(8) == 0 ? value(depth) : item(depth));
    return array(std::move(values));
}

Node RandomRecords::value(unsigned depth)
{
    static const Node scalars[] = {
        {.xml = "<true/>", .binary = "\x09"},
        {.xml = "<integer>-5</integer>", .binary = '\x13' + bigEndian(qint64(-5))},
        {.xml = "<integer>18446744073709551615</integer>",
         .binary = '\x14' + bigEndian(quint64(0)) + bigEndian(~quint64(0))},
        {.xml = "<string/>", .binary = "\x50"},
        ascii("764"),
        {.xml = "<string>&#228;/..</string>", .binary = QByteArray("\x64\0\xE4\0/\0.\0.", 9)},
        {.xml = "<real>1e999</real>", .binary = '\x23' + bigEndian(quint64(0x7FF0) << 48)},
        {.xml = "<data>AAEC</data>", .binary = QByteArray("\x43\0\1\2", 4)},
        {.xml = "<date>2001-01-01T00:00:00Z</date>", .binary = '\x33' + bigEndian(quint64(0))},
    };
    const unsigned kind = pick(std::size(scalars) + 2);
    if (kind < std::size(scalars))
        return scalars[kind];
    if (depth > deepest)
        return array({});
    return kind == std::size(scalars) ? items(depth + 1) : item(depth + 1);
}
