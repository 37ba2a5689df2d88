// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Toolkit/NoticeStrip.h"

#include "Platform/LineText.h"
#include "Toolkit/PlainText.h"

#include <QAccessibleWidget>
#include <QApplication>
#include <QBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyle>

namespace {

constexpr QRgb warningColor = 0xfff67400;
/// How much of the color is in the ground; the text must stay readable on it.
constexpr qreal groundShare = 0.15;
/// Below this many times the buttons' width they stand under the text.
constexpr int textShare = 2;

bool isWarning(PaneNotice::Kind kind)
{
    return kind <= PaneNotice::Kind::Replaced;
}

/// An answer may bring another notice at once, with a button at the same place: the second half of a double
/// click is not meant for it.
class NoticeButton final : public QPushButton
{
public:
    using QPushButton::QPushButton;

protected:
    void mouseDoubleClickEvent(QMouseEvent *) override {}
};

bool isDismissible(PaneNotice::Kind kind)
{
    return kind == PaneNotice::Kind::Replaced || kind == PaneNotice::Kind::LeftOut ||
           kind == PaneNotice::Kind::Hint || kind == PaneNotice::Kind::Tip;
}

/// Screen readers announce an alert when it appears.
QAccessibleInterface *accessibleStrip(const QString &, QObject *object)
{
    auto *const strip = qobject_cast<NoticeStrip *>(object);
    return strip ? new QAccessibleWidget(strip, QAccessible::AlertMessage) : nullptr;
}

QColor mixed(const QColor &one, const QColor &other, qreal share)
{
    const auto channel = [share](float a, float b) { return float(a * (1 - share) + b * share); };
    return QColor::fromRgbF(channel(one.redF(), other.redF()), channel(one.greenF(), other.greenF()),
                            channel(one.blueF(), other.blueF()));
}

} // namespace

NoticeStrip::NoticeStrip(QWidget *parent)
    : QWidget(parent)
    , layout_(new QBoxLayout(QBoxLayout::LeftToRight, this))
    , symbol_(PlainText::label({}))
    , text_(PlainText::label({}))
{
    [[maybe_unused]] static const bool isInstalled = (QAccessible::installFactory(&accessibleStrip), true);
    setObjectName(QStringLiteral("noticeStrip"));
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);

    text_->setObjectName(QStringLiteral("noticeText"));
    text_->setWordWrap(true);
    // Wraps as narrow as the window becomes.
    text_->setMinimumWidth(1);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto *const message = new QHBoxLayout;
    message->addWidget(symbol_, 0, Qt::AlignTop);
    message->addWidget(text_, 1);
    layout_->addLayout(message, 1);
    hide();
}

void NoticeStrip::setPane(PreferencePane *pane)
{
    pane_ = pane;
    if (!pane) {
        notices_.clear();
        showMostImportant();
    }
}

QString NoticeStrip::shortReason(const QString &reason)
{
    const QString last = reason.section(QStringLiteral(": "), -1).trimmed();
    return last.isEmpty() ? reason : last;
}

void NoticeStrip::saved(const Result<> &result)
{
    if (result) {
        takeBackNotice(PaneNotice::Kind::SaveFailed);
        return;
    }
    showNotice({.kind = PaneNotice::Kind::SaveFailed,
                .text = tr("Changes cannot be saved: %1.").arg(shortReason(result.error)),
                .details = result.error,
                .actions = {{tr("Try Again"), [this] {
                                 if (pane_)
                                     (void)pane_->save();
                             }}}});
}

void NoticeStrip::showNotice(const PaneNotice &notice)
{
    notices_.insert(notice.kind, notice);
    showMostImportant();
}

void NoticeStrip::takeBackNotice(PaneNotice::Kind kind)
{
    if (notices_.remove(kind) > 0)
        showMostImportant();
}

void NoticeStrip::showMostImportant()
{
    const bool hadKeyboard = buttons_ && buttons_->isAncestorOf(QApplication::focusWidget());
    if (buttons_) {
        // One of them may be what called this.
        buttons_->hide();
        buttons_->deleteLater();
        buttons_ = nullptr;
    }
    setVisible(!notices_.isEmpty());
    if (notices_.isEmpty())
        return;
    const PaneNotice &notice = notices_.first();
    QList<PaneNotice::Action> actions = notice.actions;
    if (isDismissible(notice.kind))
        actions.append({tr("Dismiss"), [this, kind = notice.kind] { takeBackNotice(kind); }});

    const QStyle::StandardPixmap symbol =
        isWarning(notice.kind) ? QStyle::SP_MessageBoxWarning : QStyle::SP_MessageBoxInformation;
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    symbol_->setPixmap(style()->standardIcon(symbol).pixmap(QSize(size, size), devicePixelRatioF()));
    const QString text = linesText(notice.text);
    text_->setText(text);
    setToolTip(notice.details.isEmpty() ? QString() : PlainText::toolTip(notice.details));

    buttons_ = new QWidget(this);
    auto *const row = new QHBoxLayout(buttons_);
    row->setContentsMargins({});
    row->addStretch(1);
    for (const PaneNotice::Action &action : std::as_const(actions)) {
        auto *const button = new NoticeButton(action.title);
        button->setAutoDefault(true);
        connect(button, &QPushButton::clicked, this, [run = action.run] { run(); });
        row->addWidget(button);
    }
    layout_->addWidget(buttons_);
    buttons_->show();
    placeButtons();
    if (hadKeyboard)
        buttons_->findChild<QPushButton *>()->setFocus();
    update();

    setAccessibleDescription(linesText(notice.details));
    if (accessibleName() == text)
        return;
    setAccessibleName(text);
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void NoticeStrip::placeButtons()
{
    if (!buttons_)
        return;
    const bool areBeside = buttons_->sizeHint().width() * (1 + textShare) <= width();
    layout_->setDirection(areBeside ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom);
}

void NoticeStrip::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeButtons();
}

void NoticeStrip::paintEvent(QPaintEvent *)
{
    if (notices_.isEmpty())
        return;
    const QColor color = isWarning(notices_.firstKey()) ? QColor::fromRgba(warningColor)
                                                        : palette().color(QPalette::Highlight);
    QPainter painter(this);
    painter.fillRect(rect(), mixed(palette().color(QPalette::Window), color, groundShare));
    painter.fillRect(QRect(0, height() - 1, width(), 1), color);
}
