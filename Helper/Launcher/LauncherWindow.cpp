// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Launcher/LauncherWindow.h"

#include "Helper/Launcher/PlacePicker.h"
#include "Helper/Launcher/PresetListView.h"
#include "Toolkit/ReadablePlaceholders.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("LauncherWindow", text);
}

} // namespace

LauncherWindow::LauncherWindow(Handlers handlers)
    : handlers_(std::move(handlers))
    , field_(new QLineEdit)
    , list_(new PresetListView)
    , places_(new PlacePicker([this] { tellChoice(); }))
    , create_(new QPushButton)
    , openPane_(new QPushButton(translated("&Open Quenby…")))
{
    setWindowTitle(translated("Create a Preset"));
    field_->setPlaceholderText(translated("Type a part of its name"));
    field_->setAccessibleName(translated("Preset to create"));
    field_->setClearButtonEnabled(true);
    field_->installEventFilter(this);
    connect(field_, &QLineEdit::textChanged, this, &LauncherWindow::filter);
    list_->setModel(&presets_);
    connect(list_->selectionModel(), &QItemSelectionModel::currentChanged, this, &LauncherWindow::tellChoice);
    // Return goes to the default button, also from the list.
    connect(list_, &QAbstractItemView::doubleClicked, this, &LauncherWindow::create);
    create_->setDefault(true);
    connect(create_, &QPushButton::clicked, this, &LauncherWindow::create);
    openPane_->setAutoDefault(false);
    connect(openPane_, &QPushButton::clicked, this, [this] {
        handlers_.openPane();
        reject();
    });
    layOut();
    new ReadablePlaceholders(*this);
    setPresets({}, true);
    setPlaces({}, {});
}

LauncherWindow::~LauncherWindow() = default;

void LauncherWindow::layOut()
{
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(openPane_);
    buttons->addStretch();
    buttons->addWidget(create_);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(field_);
    layout->addWidget(list_, 1);
    layout->addWidget(places_);
    layout->addLayout(buttons);
}

void LauncherWindow::setPresets(const QStringList &labels, bool areKnown)
{
    const int row = list_->currentIndex().row();
    const qsizetype place = row < 0 ? -1 : presets_.placeAt(row);
    const QString label = presets_.labels().value(place);
    areKnown_ = areKnown;
    presets_.setLabels(labels);
    choose(place < 0 ? 0 : presets_.rowOf(place, label));
}

void LauncherWindow::setPlaces(const QStringList &named, const QStringList &recent)
{
    places_->setPlaces(named, recent);
    field_->setFocus();
    field_->selectAll();
    tellChoice();
}

void LauncherWindow::filter(const QString &typed)
{
    presets_.setTyped(typed);
    choose(0);
}

void LauncherWindow::choose(int row)
{
    list_->setCurrentIndex(presets_.index(std::max(row, 0)));
    tellChoice();
}

void LauncherWindow::tellChoice()
{
    const QModelIndex choice = list_->currentIndex();
    create_->setEnabled(choice.isValid());
    // An ellipsis: it asks for the folder first.
    create_->setText(places_->folders().isEmpty() ? translated("&Create…") : translated("&Create"));
    QString reason;
    if (!choice.isValid())
        reason = !presets_.labels().isEmpty() ? translated("No preset has that in its name.")
                 : areKnown_                  ? translated("There are no presets. Design them in Quenby.")
                                              : translated("The presets cannot be read.");
    list_->setEmptyText(reason);
    // The keyboard is in the field while the choice moves: who does not see it hears of it there.
    field_->setAccessibleDescription(choice.isValid() ? choice.data().toString() : reason);
}

void LauncherWindow::create()
{
    const QModelIndex choice = list_->currentIndex();
    if (!choice.isValid())
        return;
    const QStringList folders = places_->folders();
    if (folders.isEmpty()) {
        places_->chooseFolder([this] { create(); });
        return;
    }
    const qsizetype place = presets_.placeAt(choice.row());
    handlers_.create(place, presets_.labels().at(place), folders);
    accept();
}

bool LauncherWindow::eventFilter(QObject *watched, QEvent *event)
{
    return (watched == field_ && event->type() == QEvent::KeyPress &&
            list_->takeKey(static_cast<QKeyEvent &>(*event))) ||
           QDialog::eventFilter(watched, event);
}
