// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "ContextMenu/ThunarActions.h"

#include <QList>
#include <QStringDecoder>
#include <QXmlStreamReader>

namespace {

const QByteArray byteOrderMark = QByteArrayLiteral("\xef\xbb\xbf");
constexpr QStringView rootElement = u"actions";
constexpr QStringView actionElement = u"action";
constexpr QStringView identifierElement = u"unique-id";

/// A part of a text.
struct Range
{
    qsizetype begin = 0;
    qsizetype end = 0;
};

struct Structure
{
    /// Of our actions, each with the line end behind it.
    QList<Range> ours;
    /// Where the root's end tag begins.
    qsizetype end = 0;
};

/// Where the tag begins that the reader has just read: no tag holds another "<".
qsizetype beginOfTag(const QString &text, const QXmlStreamReader &reader)
{
    return text.lastIndexOf(u'<', reader.characterOffset() - 1);
}

/// Reads one action up to its end, and says whether it is ours.
bool isOurs(QXmlStreamReader &reader)
{
    bool ours = false;
    while (reader.readNextStartElement()) {
        if (reader.name() == identifierElement)
            ours = reader.readElementText(QXmlStreamReader::SkipChildElements)
                       .trimmed()
                       .startsWith(ThunarActions::identifierPrefix) ||
                   ours;
        else
            reader.skipCurrentElement();
    }
    return ours;
}

std::optional<Structure> structureOf(const QString &text, QString *error)
{
    Structure structure;
    QXmlStreamReader reader(text);
    if (!reader.readNextStartElement() || reader.name() != rootElement) {
        *error = reader.hasError() ? reader.errorString() : QStringLiteral("no list of actions");
        return std::nullopt;
    }
    while (reader.readNextStartElement()) {
        const qsizetype begin = beginOfTag(text, reader);
        if (reader.name() != actionElement) {
            reader.skipCurrentElement();
            continue;
        }
        if (!isOurs(reader))
            continue;
        qsizetype end = reader.characterOffset();
        if (end < text.size() && text.at(end) == u'\n')
            ++end;
        structure.ours.append({begin, end});
    }
    structure.end = beginOfTag(text, reader);
    // What follows has to be sound too.
    while (!reader.atEnd())
        reader.readNext();
    if (reader.hasError()) {
        *error =
            QStringLiteral("line %1: %2").arg(QString::number(reader.lineNumber()), reader.errorString());
        return std::nullopt;
    }
    if (!QStringView(text).mid(structure.end).startsWith(u"</")) {
        *error = QStringLiteral("a list of actions that is no pair of tags");
        return std::nullopt;
    }
    return structure;
}

} // namespace

QByteArray ThunarActions::emptyFile()
{
    return QByteArrayLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n</actions>\n");
}

std::optional<QByteArray> ThunarActions::withActions(const QByteArray &file, const QByteArrayList &actions,
                                                     QString *error)
{
    const QByteArray mark = file.startsWith(byteOrderMark) ? byteOrderMark : QByteArray();
    QStringDecoder decode(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
    QString text = decode(file.mid(mark.size()));
    if (decode.hasError() || text.toUtf8() != file.mid(mark.size())) {
        *error = QStringLiteral("not in UTF-8");
        return std::nullopt;
    }
    const std::optional<Structure> structure = structureOf(text, error);
    if (!structure)
        return std::nullopt;
    const qsizetype place = structure->ours.isEmpty() ? structure->end : structure->ours.first().begin;
    for (qsizetype index = structure->ours.size() - 1; index >= 0; --index) {
        const Range &range = structure->ours.at(index);
        text.remove(range.begin, range.end - range.begin);
    }
    QByteArray block;
    for (const QByteArray &action : actions)
        block += action + '\n';
    text.insert(place, QString::fromUtf8(block));
    return mark + text.toUtf8();
}
