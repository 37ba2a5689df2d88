// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Source/Model/HostileFiles.h"

#include "Tests/Platform/PropertyLists/BinaryDocument.h"

#include <algorithm>

namespace {

using Ref = BinaryDocument::Ref;
using Refs = BinaryDocument::Refs;

/// What the files are made of: one large part, and many references to it.
enum class Large { Data, Text, Name, Identifier, Key, Array };

/// The part takes half of the file, the references most of the rest.
constexpr qsizetype bytesPerReference = 2;
constexpr qsizetype bytesPerItem = 16;

/// A domain with one preset, which has these values under "extra" and these children.
QByteArray domainBytes(BinaryDocument &document, const Refs &extra, const Refs &children)
{
    const Ref tree = document.dictionary({document.string("isFolder"), document.string("children")},
                                         {document.boolean(true), document.array(children)});
    const Ref record = document.dictionary(
        {document.string("label"), document.string("fileHierarchy"), document.string("extra")},
        {document.string("A"), tree, document.array(extra)});
    const Ref loaded = document.dictionary({document.string("loaded")}, {document.boolean(true)});
    return document.bytes(
        document.dictionary({document.string("QNBPresetsStored"), document.string("QNBPresets")},
                            {loaded, document.array({record})}));
}

/// An archive whose root is a dictionary inlined in "$top", as other writers do it.
QByteArray archive(BinaryDocument &document, const Refs &extra, const Refs &children)
{
    const Ref tree = document.dictionary({document.string("isFolder"), document.string("children")},
                                         {document.boolean(true), document.array(children)});
    const Ref record = document.dictionary({document.string("fileHierarchy"), document.string("extra")},
                                           {tree, document.array(extra)});
    const Ref top = document.dictionary({document.string("root")}, {record});
    return document.bytes(document.dictionary({document.string("$top"), document.string("$objects")},
                                              {top, document.array({document.string("$null")})}));
}

QByteArray shared(Large large, qsizetype size, bool isPreset)
{
    BinaryDocument document;
    const QByteArray payload(size / 2, 'p');
    const qsizetype references = size / 2 / bytesPerReference;
    const qsizetype items = size / 2 / bytesPerItem;
    Refs extra;
    Refs children;
    switch (large) {
    case Large::Data:
        extra.assign(std::size_t(references), document.data(payload));
        break;
    case Large::Text:
        extra.assign(std::size_t(references), document.string(payload));
        break;
    case Large::Array:
        extra.assign(std::size_t(references) / 64,
                     document.array(Refs(std::size_t(size / 2 / bytesPerReference), document.boolean(true))));
        break;
    case Large::Key: {
        Refs keys;
        for (int i = 0; i < 10; ++i)
            keys.push_back(document.string(payload.left(4000) + char('0' + i)));
        const Refs values(keys.size(), document.boolean(true));
        for (qsizetype i = 0; i < size / 60; ++i)
            extra.push_back(document.dictionary(keys, values));
        break;
    }
    case Large::Name:
    case Large::Identifier: {
        const Ref key = document.string(large == Large::Name ? "filename" : "uid");
        const Ref text = document.string(payload);
        for (qsizetype i = 0; i < items; ++i)
            children.push_back(document.dictionary({key}, {text}));
        break;
    }
    }
    return isPreset ? archive(document, extra, children) : domainBytes(document, extra, children);
}

/// Arrays of one folder shared: \a width children for each of the levels.
QByteArray multiplied(int width, int levels, qsizetype padding, bool isPreset)
{
    BinaryDocument document;
    Ref item = document.dictionary({}, {});
    const Ref key = document.string("children");
    document.data(QByteArray(padding, 'x'));
    for (int level = 1; level < levels; ++level)
        item = document.dictionary({key}, {document.array(Refs(std::size_t(width), item))});
    const Refs children(std::size_t(width), item);
    return isPreset ? archive(document, {}, children) : domainBytes(document, {}, children);
}

/// An archive of many arrays or dictionaries whose parts are one list, which each names by its number.
QByteArray objectsOverOneList(bool areDictionaries, qsizetype size)
{
    constexpr qsizetype bytesPerObject = 40;
    constexpr qsizetype bytesPerPart = 5;
    constexpr quint32 firstObject = 6;
    const qsizetype count = size / 2 / bytesPerObject;
    BinaryDocument document;
    const Ref keysField = document.string("NS.keys");
    const Ref objectsField = document.string("NS.objects");
    const Ref classField = document.string("$class");
    const auto classNamed = [&document](const char *name) {
        return document.dictionary({document.string("$classname")}, {document.string(name)});
    };
    const Ref dictionaryClass = document.uid(1);
    const Ref arrayClass = document.uid(2);
    const Ref text = document.uid(3);
    const Ref list = document.uid(4);
    Refs references;
    for (quint32 i = 0; i < count; ++i)
        references.push_back(document.uid(firstObject + i));
    const Ref extra =
        document.dictionary({objectsField, classField}, {document.array(references), arrayClass});
    Refs objects{document.string("$null"),
                 classNamed("NSDictionary"),
                 classNamed("NSArray"),
                 document.string("extra"),
                 document.array(Refs(std::size_t(size / 2 / bytesPerPart), text)),
                 document.dictionary({keysField, objectsField, classField},
                                     {document.array({text}), document.array({extra}), dictionaryClass})};
    for (qsizetype i = 0; i < count; ++i)
        objects.push_back(
            areDictionaries
                ? document.dictionary({keysField, objectsField, classField}, {list, list, dictionaryClass})
                : document.dictionary({objectsField, classField}, {list, arrayClass}));
    const Ref top = document.dictionary({document.string("root")}, {document.uid(firstObject - 1)});
    return document.bytes(document.dictionary({document.string("$top"), document.string("$objects")},
                                              {top, document.array(objects)}));
}

QByteArray xmlDomain(const QByteArray &record)
{
    return "<plist><dict><key>QNBPresetsStored</key><dict><key>loaded</key><true/></dict><key>QNBPresets</"
           "key>"
           "<array><dict>" +
           record + "</dict></array></dict></plist>";
}

QByteArray xmlItems(qsizetype size)
{
    return xmlDomain("<key>fileHierarchy</key><dict><key>children</key><array>" +
                     QByteArray("<dict/>").repeated(size / 7) + "</array></dict>");
}

/// Of about so many bytes, each with a name of its own.
QByteArray attributes(qsizetype size)
{
    QByteArray result;
    for (int i = 0; result.size() < size; ++i)
        result += " a" + QByteArray::number(i) + "=''";
    return result;
}

/// A document type that gives many attributes to many elements.
QByteArray withDefaults(qsizetype size)
{
    QByteArray type = "<!DOCTYPE plist [";
    for (int i = 0; type.size() < size / 2; ++i)
        type += "<!ATTLIST dict a" + QByteArray::number(i) + " CDATA 'x'>";
    return type + "]>" +
           xmlDomain("<key>a</key><array>" + QByteArray("<dict/>").repeated(size / 14) + "</array>");
}

} // namespace

QList<HostileFile> hostileFiles(qsizetype size)
{
    QList<HostileFile> files;
    for (const bool isPreset : {false, true}) {
        files << HostileFile{"shared data", isPreset, shared(Large::Data, size, isPreset), true}
              << HostileFile{"shared text", isPreset, shared(Large::Text, size, isPreset), true}
              << HostileFile{"shared name", isPreset, shared(Large::Name, size, isPreset), true}
              << HostileFile{"shared identifier", isPreset, shared(Large::Identifier, size, isPreset), true}
              << HostileFile{"shared keys", isPreset, shared(Large::Key, size, isPreset), true}
              << HostileFile{"shared array", isPreset, shared(Large::Array, size, isPreset), size <= 20'000}
              << HostileFile{"980,100 items of 3 kB", isPreset, multiplied(990, 2, 0, isPreset), false}
              << HostileFile{"8,100 items of 0.5 kB", isPreset, multiplied(90, 2, 0, isPreset), true}
              << HostileFile{"as many items as bytes", isPreset,
                             multiplied(int(size / 2), 1, size / 2, isPreset), size <= 20'000};
    }
    files << HostileFile{"arrays over one list", true, objectsOverOneList(false, size), size <= 20'000}
          << HostileFile{"dictionaries over one list", true, objectsOverOneList(true, size), false};
    files << HostileFile{"XML of empty items", false, xmlItems(size), true}
          << HostileFile{"XML of one text", false,
                         xmlDomain("<key>a</key><string>" + QByteArray("&amp;").repeated(size / 5) +
                                   "</string>"),
                         true}
          << HostileFile{"XML of one tag", false, xmlDomain("<key>a</key><dict" + attributes(size) + "/>"),
                         false}
          << HostileFile{"XML of long tags", false,
                         xmlDomain("<key>a</key><array>" +
                                   ("<dict" + attributes(3'900) + "/>").repeated(size / 3'900) + "</array>"),
                         true}
          << HostileFile{"XML of default attributes", false, withDefaults(size), false}
          << HostileFile{"XML of one comment", false,
                         xmlDomain("<key>a</key><true/><!--" + QByteArray(size, 'a') + "-->"), true}
          << HostileFile{"XML of comments", false,
                         xmlDomain("<key>a</key><string>" + QByteArray("<!---->").repeated(size / 7) +
                                   "</string>"),
                         true}
          << HostileFile{"XML of one instruction", false,
                         xmlDomain("<key>a</key><true/><?a " + QByteArray(size, 'a') + "?>"), true}
          << HostileFile{"XML of instructions", false,
                         xmlDomain("<key>a</key><string>" + QByteArray("<?a?>").repeated(size / 5) +
                                   "</string>"),
                         true}
          << HostileFile{"XML of one marked text", false,
                         xmlDomain("<key>a</key><string><![CDATA[" + QByteArray(size, '<') + "]]></string>"),
                         true}
          << HostileFile{"XML of marked texts", false,
                         xmlDomain("<key>a</key><string>" + QByteArray("<![CDATA[]]>").repeated(size / 12) +
                                   "</string>"),
                         true}
          << HostileFile{
                 "XML of short values", false,
                 xmlDomain("<key>a</key><array>" + QByteArray("<true/>").repeated(size / 7) + "</array>"),
                 true};
    return files;
}
