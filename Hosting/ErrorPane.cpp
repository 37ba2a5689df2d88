// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Hosting/ErrorPane.h"

#include "Toolkit/PlainText.h"

#include <QCoreApplication>
#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>

ErrorPane::ErrorPane(QString reason)
    : reason_(std::move(reason))
{
}

QWidget *ErrorPane::loadMainView()
{
    view_ = new QWidget;
    view_->setObjectName(QStringLiteral("errorPage"));

    QLabel *const symbol = PlainText::label({});
    const int size = view_->style()->pixelMetric(QStyle::PM_MessageBoxIconSize);
    symbol->setPixmap(view_->style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(size));
    symbol->setAlignment(Qt::AlignCenter);

    QLabel *const heading =
        PlainText::label(QCoreApplication::translate("ErrorPane", "This settings pane cannot be shown"));
    heading->setObjectName(QStringLiteral("errorHeading"));
    heading->setAlignment(Qt::AlignCenter);
    heading->setWordWrap(true);
    QFont font = heading->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.2);
    heading->setFont(font);

    QLabel *const text = PlainText::label(reason_);
    text->setObjectName(QStringLiteral("errorReason"));
    text->setAlignment(Qt::AlignCenter);
    text->setWordWrap(true);
    text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    text->setFocusPolicy(Qt::StrongFocus);

    auto *const layout = new QVBoxLayout(view_);
    layout->addStretch(1);
    layout->addWidget(symbol);
    layout->addWidget(heading);
    layout->addWidget(text);
    layout->addStretch(2);
    return view_;
}
