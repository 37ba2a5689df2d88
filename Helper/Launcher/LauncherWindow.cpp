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
    , undo_(new QPushButton(translated("&Undo Last Creation")))
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
    connect(create_, &QPushButton::clicked, this, &LauncherWindow::create);
    connect(undo_, &QPushButton::clicked, this, [this] {
        handlers_.undo();
        reject();
    });
    connect(openPane_, &QPushButton::clicked, this, [this] {
        handlers_.openPane();
        reject();
    });
    layOut();
    // Once it is in the window; a button that has the keyboard takes Return for itself meanwhile.
    create_->setDefault(true);
    new ReadablePlaceholders(*this);
    setPresets({});
    setPlaces({}, {});
    setCanUndo(false);
}

LauncherWindow::~LauncherWindow() = default;

void LauncherWindow::layOut()
{
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(openPane_);
    buttons->addWidget(undo_);
    buttons->addStretch();
    buttons->addWidget(create_);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(field_);
    layout->addWidget(list_, 1);
    layout->addWidget(places_);
    layout->addLayout(buttons);
}

void LauncherWindow::setPresets(const QStringList &labels, const QString &problem)
{
    const bool wasEmpty = presets_.rowCount() == 0;
    const int row = list_->currentIndex().row();
    const qsizetype place = row < 0 ? -1 : presets_.placeAt(row);
    const QString label = presets_.labels().value(place);
    problem_ = problem;
    presets_.setLabels(labels);
    // Another one in place of a choice that is gone would be created by a Return that was meant for that.
    choose(wasEmpty ? 0 : place < 0 ? -1 : presets_.rowOf(place, label));
}

void LauncherWindow::setPlaces(const QStringList &named, const QStringList &recent)
{
    places_->setPlaces(named, recent);
    tellChoice();
}

void LauncherWindow::setCanUndo(bool canUndo)
{
    undo_->setEnabled(canUndo);
}

void LauncherWindow::beginTyping()
{
    field_->setFocus();
    field_->selectAll();
}

void LauncherWindow::filter(const QString &typed)
{
    presets_.setTyped(typed);
    choose(0);
}

void LauncherWindow::choose(int row)
{
    list_->setCurrentIndex(presets_.index(row));
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
        reason = presets_.rowCount() > 0        ? translated("The chosen preset is not there any more.")
                 : !presets_.labels().isEmpty() ? translated("No preset has that in its name.")
                 : problem_.isEmpty()           ? translated("There are no presets. Design them in Quenby.")
                                                : translated("The presets cannot be read: %1").arg(problem_);
    list_->setEmptyText(reason);
    // The keyboard is in the field while the choice moves: who does not see it hears of it there.
    field_->setAccessibleDescription(choice.isValid() ? choice.data().toString() : reason);
}

void LauncherWindow::create()
{
    const QModelIndex choice = list_->currentIndex();
    if (!choice.isValid())
        return;
    const qsizetype place = presets_.placeAt(choice.row());
    // The presets may be others by the time a folder is chosen.
    const auto createThis = [this, place, label = presets_.labels().at(place)] {
        handlers_.create(place, label, places_->folders());
        accept();
    };
    if (places_->folders().isEmpty())
        places_->chooseFolder(createThis);
    else
        createThis();
}

bool LauncherWindow::eventFilter(QObject *watched, QEvent *event)
{
    return (watched == field_ && event->type() == QEvent::KeyPress &&
            list_->takeKey(static_cast<QKeyEvent &>(*event))) ||
           QDialog::eventFilter(watched, event);
}
