// SPDX-License-Identifier: MIT
#include "platform/qt/other_names.h"

#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <algorithm>
#include <filesystem>
#include <system_error>

namespace {

constexpr int rows_shown = 3;

// What the last parentheses of a file type hold.
QStringList Patterns(const QString& type) {
    return type.mid(type.lastIndexOf(QLatin1Char('(')) + 1)
        .chopped(1)
        .split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

bool IsUtf8(const std::string& name) {
    return QString::fromStdString(name).toStdString() == name;
}

}  // namespace

OtherNames::OtherNames(QFileDialog& dialog, bool several)
    : QWidget(&dialog),
      m_dialog(dialog),
      m_list(new QListWidget),
      m_open(new QPushButton(QStringLiteral("O&pen"))) {
    auto* caption = new QLabel(QStringLiteral("Names in &another encoding:"));
    caption->setBuddy(m_list);
    m_list->setSelectionMode(several ? QAbstractItemView::ExtendedSelection
                                     : QAbstractItemView::SingleSelection);
    m_list->setFixedHeight(rows_shown * m_list->fontMetrics().lineSpacing() * 3 / 2);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(caption);
    row->addWidget(m_list, 1);
    row->addWidget(m_open);
    if (auto* grid = qobject_cast<QGridLayout*>(dialog.layout()))
        grid->addWidget(this, grid->rowCount(), 0, 1, grid->columnCount());

    connect(m_open, &QPushButton::clicked, this, [this] { Choose(); });
    connect(m_list, &QListWidget::itemActivated, this, [this] { Choose(); });
    connect(m_list, &QListWidget::itemSelectionChanged, this,
            [this] { m_open->setEnabled(!m_list->selectedItems().isEmpty()); });
    connect(&dialog, &QFileDialog::directoryEntered, this, [this] { Refresh(); });
    connect(&dialog, &QFileDialog::filterSelected, this, [this] { Refresh(); });
    Refresh();
}

void OtherNames::Refresh() {
    const QStringList patterns = Patterns(m_dialog.selectedNameFilter());
    m_folder = m_dialog.directory().absolutePath().toStdString();
    m_names.clear();
    std::error_code error;
    for (auto entry = std::filesystem::directory_iterator(m_folder, error);
         !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        std::string name = entry->path().filename();
        std::error_code status;
        if (!IsUtf8(name) && QDir::match(patterns, QString::fromStdString(name)) &&
            entry->is_regular_file(status))
            m_names.push_back(std::move(name));
    }
    std::ranges::sort(m_names);
    m_list->clear();
    for (const std::string& name : m_names) m_list->addItem(QString::fromStdString(name));
    m_open->setEnabled(false);
    setVisible(!m_names.empty());
}

void OtherNames::Choose() {
    for (int i = 0; i < m_list->count(); ++i)
        if (m_list->item(i)->isSelected())
            m_paths.push_back(m_folder + '/' + m_names.at(static_cast<std::size_t>(i)));
    if (!m_paths.empty()) m_dialog.QDialog::done(QDialog::Accepted);
}
