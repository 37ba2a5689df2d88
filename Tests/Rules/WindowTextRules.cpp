// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Tests/Rules/WindowTextRules.h"

#include <QRegularExpression>
#include <QXmlStreamReader>

#include <algorithm>

namespace {

const QString oneWay = QStringLiteral("Toolkit/PlainText.h");
/// Its text is the program's own, and a link.
const QStringList richLabels = {QStringLiteral("_ui_websiteLink")};

bool isProduct(const SourceFile &file)
{
    static const QStringList others = {QStringLiteral("Tests/"), QStringLiteral("Benchmarks/"),
                                       QStringLiteral("Fuzz/")};
    return file.isCpp() && std::none_of(others.begin(), others.end(), [&file](const QString &other) {
               return file.path.startsWith(other);
           });
}

QString describeAt(const SourceFile &file, qsizetype at, const QString &reason)
{
    const qsizetype line = file.text.left(at).count(u'\n');
    return QStringLiteral("%1:%2: %3. %4")
        .arg(file.path, QString::number(line + 1), file.lines()[line].trimmed(), reason);
}

/// Where the bracket at \a open is closed, in \a code.
qsizetype closingBracket(const QString &code, qsizetype open)
{
    int depth = 0;
    for (qsizetype at = open; at < code.size(); ++at) {
        if (code[at] == u'(')
            ++depth;
        else if (code[at] == u')' && --depth == 0)
            return at;
    }
    return code.size();
}

/// Whether an argument, without what is in its literals, is one text of the program's own, or goes the one
/// way.
bool isOwnOrPlain(const QString &argument)
{
    static const QString text =
        QStringLiteral("((QCoreApplication::)?(tr|translated?)\\s*\\([\\s\",]*\\)|QString\\(\\)|\\{\\})");
    static const QRegularExpression own(
        QStringLiteral("^\\s*(\\w+\\s*\\?\\s*%1\\s*:\\s*)?%1\\s*$").arg(text));
    return argument.contains(u"PlainText::toolTip(") || own.match(argument).hasMatch();
}

QStringList violationsOfToolTips(const SourceFile &file, const QString &code)
{
    static const QRegularExpression call(QStringLiteral("\\bsetToolTip\\s*\\(|\\bQToolTip::showText\\s*\\("));
    QStringList violations;
    for (auto match = call.globalMatch(code); match.hasNext();) {
        const QRegularExpressionMatch found = match.next();
        const qsizetype open = found.capturedEnd() - 1;
        if (!isOwnOrPlain(code.mid(open + 1, closingBracket(code, open) - open - 1)))
            violations.append(
                describeAt(file, found.capturedStart(),
                           QStringLiteral("A tool tip that looks like markup is taken for it: use "
                                          "PlainText::toolTip()")));
    }
    return violations;
}

} // namespace

QString WindowTextRules::codeOf(const QString &text)
{
    static const QRegularExpression hidden(
        QStringLiteral("//[^\\n]*|/\\*.*?\\*/"
                       "|R\"([^(\\s]*)\\(.*?\\)\\1\"|\"(?:\\\\.|[^\"\\\\\\n])*\"|'(?:\\\\.|[^'\\\\\\n])'"),
        QRegularExpression::DotMatchesEverythingOption);
    QString code = text;
    for (auto match = hidden.globalMatch(text); match.hasNext();) {
        const QRegularExpressionMatch found = match.next();
        const bool isComment = found.capturedView().startsWith(u'/');
        for (qsizetype at = found.capturedStart(); at < found.capturedEnd(); ++at) {
            const bool isMark = !isComment && (at == found.capturedStart() || at + 1 == found.capturedEnd());
            if (code[at] != u'\n')
                code[at] = isMark && found.capturedView().back() == u'"' ? u'"' : u' ';
        }
    }
    return code;
}

QStringList WindowTextRules::violationsOfPlainText(const SourceFile &file)
{
    if (!isProduct(file) || file.path == oneWay)
        return {};
    static const QRegularExpression made(QStringLiteral(
        "\\bnew\\s+(QLabel|QMessageBox|QProgressDialog|QErrorMessage|QTextEdit|QTextBrowser)\\b|"
        "\\bmake_(unique|shared)<(QLabel|QMessageBox|QProgressDialog|QErrorMessage|QTextEdit|QTextBrowser)>|"
        "\\b(QLabel|QMessageBox|QProgressDialog|QErrorMessage|QTextEdit|QTextBrowser)(\\s+\\w+\\s*[;({]|\\s*["
        "({])|"
        "\\bQMessageBox::(about|critical|information|question|warning)\\b|\\bQInputDialog\\b|"
        "\\bset(WhatsThis|StatusTip|TextFormat|InformativeText|DetailedText|Html|Markdown)\\s*\\(|"
        "\\b(append|insert)Html\\s*\\(|\\bsetLabelText\\s*\\((?!\\s*QFileDialog::)|"
        "\\bQt::(ToolTipRole|WhatsThisRole|StatusTipRole|RichText|AutoText|MarkdownText)\\b"));
    const QString code = codeOf(file.text);
    QStringList violations = violationsOfToolTips(file, code);
    for (auto match = made.globalMatch(code); match.hasNext();)
        violations.append(
            describeAt(file, match.next().capturedStart(),
                       QStringLiteral("A text that looks like markup is taken for it: what shows "
                                      "texts is made by Toolkit/PlainText.h")));
    return violations;
}

QStringList WindowTextRules::violationsOfPlainInterface(const SourceFile &file)
{
    QStringList violations;
    QXmlStreamReader reader(file.text);
    QString label;
    bool isPlain = true;
    const auto finish = [&] {
        if (!isPlain && !richLabels.contains(label))
            violations.append(QStringLiteral("%1: the label %2 has not the text format Qt::PlainText.")
                                  .arg(file.path, label));
        isPlain = true;
    };
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isEndElement() && reader.name() == u"widget")
            finish();
        if (!reader.isStartElement())
            continue;
        const QString name = reader.attributes().value(QStringLiteral("name")).toString();
        if (reader.name() == u"widget") {
            label = name;
            const QString kind = reader.attributes().value(QStringLiteral("class")).toString();
            isPlain = kind != u"QLabel";
            if (kind == u"QTextEdit" || kind == u"QTextBrowser")
                violations.append(
                    QStringLiteral("%1: %2 takes what is pasted for markup; QPlainTextEdit does not.")
                        .arg(file.path, label));
        } else if (reader.name() == u"property" && name == u"textFormat") {
            isPlain = reader.readNextStartElement() && reader.readElementText() == u"Qt::PlainText";
        } else if (reader.name() == u"property" && (name == u"toolTip" || name == u"whatsThis")) {
            if (reader.readNextStartElement() && reader.readElementText().contains(u'<'))
                violations.append(QStringLiteral("%1: the %2 of %3 is markup.").arg(file.path, name, label));
        }
    }
    return violations;
}

QStringList WindowTextRules::violationsOfFilling(const SourceFile &file)
{
    if (!isProduct(file))
        return {};
    const QString code = codeOf(file.text);
    static const QRegularExpression call(QStringLiteral("\\.arg\\s*\\("));
    static const QRegularExpression next(QStringLiteral("\\G\\s*\\.arg\\s*\\("));
    QStringList violations;
    for (auto match = call.globalMatch(code); match.hasNext();) {
        const QRegularExpressionMatch found = match.next();
        const qsizetype end = closingBracket(code, found.capturedEnd() - 1) + 1;
        if (next.match(code, end).hasMatch())
            violations.append(
                describeAt(file, found.capturedStart(),
                           QStringLiteral("\"%1\" in what fills the first place would be filled by "
                                          "the second call: fill all in one, arg(a, b)")));
    }
    return violations;
}

QStringList WindowTextRules::violationsOfPrinting(const SourceFile &file)
{
    if (!isProduct(file))
        return {};
    static const QRegularExpression raw(QStringLiteral(
        "\\bq(Utf16)?Printable\\((?!\\s*lines?Text\\()|\\bnoquote\\(\\)(?!\\s*<<\\s*lines?Text\\()"));
    QStringList violations;
    for (auto match = raw.globalMatch(codeOf(file.text)); match.hasNext();)
        violations.append(
            describeAt(file, match.next().capturedStart(),
                       QStringLiteral("What moves the cursor or turns the direction of writing is "
                                      "obeyed: use lineText()")));
    return violations;
}
