// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Launcher/PresetFilter.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>

namespace {

/// Nobody types more, and a label may be as long as a stranger made it.
constexpr qsizetype longestSearched = 1024;

/// How well a label matches, the best one first.
enum Rank : std::size_t { BeginsWithAll, PartsBeginWords, HoldsParts, ranks };

/// Texts are the same here that differ in case, in accents, or in how blanks separate their words.
QString folded(const QString &text)
{
    // Capitals, unlike case folding, make SS of ß; of ẞ only when it was small.
    QString result = text.left(longestSearched).normalized(QString::NormalizationForm_KD).toLower().toUpper();
    // Letters that are composed (ç, й, が) stay without what they are marked by.
    result.removeIf([](QChar c) { return c.category() == QChar::Mark_NonSpacing; });
    return result.simplified();
}

bool isOfAWord(const QString &text, qsizetype at)
{
    const QChar c = text[at];
    if (c.isLowSurrogate() && at > 0 && text[at - 1].isHighSurrogate())
        return QChar::isLetterOrNumber(QChar::surrogateToUcs4(text[at - 1], c));
    return c.isLetterOrNumber();
}

bool beginsAWord(const QString &label, const QString &part)
{
    for (qsizetype at = label.indexOf(part); at >= 0; at = label.indexOf(part, at + 1)) {
        if (at == 0 || !isOfAWord(label, at - 1))
            return true;
    }
    return false;
}

/// None if \a label does not match.
std::optional<Rank> rankOf(const QString &label, const QString &typed, const QStringList &parts)
{
    if (typed.isEmpty() || label.startsWith(typed))
        return BeginsWithAll;
    const auto isHeld = [&label](const QString &part) { return label.contains(part); };
    if (!std::all_of(parts.begin(), parts.end(), isHeld))
        return std::nullopt;
    const auto begins = [&label](const QString &part) { return beginsAWord(label, part); };
    return std::all_of(parts.begin(), parts.end(), begins) ? PartsBeginWords : HoldsParts;
}

} // namespace

PresetFilter::PresetFilter(const QStringList &labels)
{
    folded_.reserve(labels.size());
    for (const QString &label : labels)
        folded_.append(folded(label));
}

QList<qsizetype> PresetFilter::placesFor(const QString &typed) const
{
    const QString all = folded(typed);
    const QStringList parts = all.split(u' ', Qt::SkipEmptyParts);
    std::array<QList<qsizetype>, ranks> found;
    for (qsizetype place = 0; place < folded_.size(); ++place) {
        if (const std::optional<Rank> rank = rankOf(folded_[place], all, parts))
            found.at(*rank).append(place);
    }
    return found[BeginsWithAll] + found[PartsBeginWords] + found[HoldsParts];
}
