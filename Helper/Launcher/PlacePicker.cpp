// SPDX-FileCopyrightText: Quenby contributors
// SPDX-License-Identifier: MIT

#include "Helper/Launcher/PlacePicker.h"

#include "Helper/ShownName.h"
#include "Platform/Desktop/DesktopFolders.h"
#include "Toolkit/PlainText.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QPushButton>
#include <QStyleOptionComboBox>

#include <algorithm>
#include <utility>

namespace {

/// Around a path among words that are written from right to left, where its first sign would come last.
constexpr QChar leftToRight(0x2066);
constexpr QChar endOfThat(0x2069);

QString translated(const char *text)
{
    return QCoreApplication::translate("PlacePicker", text);
}

/// Of the folders of one place, in its tool tip.
constexpr qsizetype mostListed = 20;

QString listed(const QStringList &folders)
{
    const QString list = folders.first(std::min(folders.size(), mostListed)).join(u'\n');
    return folders.size() > mostListed ? list + QStringLiteral("\n…") : list;
}

QString shownPlace(const QStringList &folders)
{
    if (folders.size() == 1)
        return ShownName::ofFolder(folders.constFirst());
    QStringList names;
    // More of them do not fit into the line.
    for (const QString &folder : folders.first(std::min(folders.size(), ShownName::longest)))
        names.append(QFileInfo(folder).fileName());
    return translated("%1 folders: %2")
        .arg(QString::number(folders.size()), ShownName::ofName(names.join(QStringLiteral(", "))));
}

/// The end of a path tells more than its middle, which is left out where there is no room for all of it.
class PathBox final : public QComboBox
{
public:
    PathBox()
    {
        // Otherwise a long path widens the window.
        setSizeAdjustPolicy(AdjustToMinimumContentsLengthWithIcon);
        view()->setTextElideMode(Qt::ElideMiddle);
    }

protected:
    void initStyleOption(QStyleOptionComboBox *option) const override
    {
        QComboBox::initStyleOption(option);
        const QRect room =
            style()->subControlRect(QStyle::CC_ComboBox, option, QStyle::SC_ComboBoxEditField, this);
        option->currentText = fontMetrics().elidedText(option->currentText, Qt::ElideMiddle, room.width());
    }
};

} // namespace

PlacePicker::PlacePicker(std::function<void()> changed)
    : changed_(std::move(changed))
    , places_(new PathBox)
{
    places_->setPlaceholderText(translated("No folder yet"));
    connect(places_, &QComboBox::currentIndexChanged, places_,
            [this] { places_->setToolTip(PlainText::toolTip(listed(folders()))); });
    places_->setAccessibleName(translated("Folder to create it in"));
    auto *label = PlainText::label(translated("Create &in:"));
    label->setBuddy(places_);
    auto *choose = new QPushButton(translated("C&hoose…"));
    connect(choose, &QPushButton::clicked, this, [this] { chooseFolder(); });

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(label);
    layout->addWidget(places_, 1);
    layout->addWidget(choose);
}

void PlacePicker::setPlaces(const QStringList &named, const QStringList &recent)
{
    places_->clear();
    if (!named.isEmpty())
        insertPlace(0, named);
    for (const QString &folder : recent) {
        if (named != QStringList(folder))
            insertPlace(places_->count(), {folder});
    }
    places_->setCurrentIndex(places_->count() > 0 ? 0 : -1);
    places_->setEnabled(places_->count() > 0);
}

void PlacePicker::insertPlace(int index, const QStringList &folders)
{
    QString text = shownPlace(folders);
    if (folders.size() == 1 && isRightToLeft())
        text = leftToRight + text + endOfThat;
    places_->insertItem(index, text, folders);
}

QStringList PlacePicker::folders() const
{
    return places_->currentData().toStringList();
}

void PlacePicker::chooseFolder(const std::function<void()> &then)
{
    auto *dialog = new QFileDialog(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowTitle(translated("Create In"));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    const QStringList now = folders();
    dialog->setDirectory(now.isEmpty() ? DesktopFolders::home() : now.constFirst());
    connect(dialog, &QFileDialog::fileSelected, this, [this, then](const QString &path) {
        const QStringList folder = {QDir::cleanPath(path)};
        int index = places_->findData(folder);
        if (index < 0)
            insertPlace(index = 0, folder);
        places_->setEnabled(true);
        places_->setCurrentIndex(index);
        changed_();
        if (then)
            then();
    });
    dialog->open();
}
