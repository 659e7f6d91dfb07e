// SPDX-License-Identifier: MIT
// The files of an Open dialog's folder whose names are not UTF-8: the toolkit's own list leaves them out, as
// its texts cannot hold them. Shown below it, and only where there are some.
#pragma once

#include <QWidget>
#include <string>
#include <vector>

class QFileDialog;
class QListWidget;
class QPushButton;

class OtherNames : public QWidget {
public:
    // Follows the folder and the type of files that the dialog shows. Part of the dialog, which owns it.
    OtherNames(QFileDialog& dialog, bool several);

    // What was chosen here, if that ended the dialog.
    const std::vector<std::string>& Paths() const { return m_paths; }

private:
    void Refresh();
    void Choose();

    QFileDialog& m_dialog;
    QListWidget* m_list;
    QPushButton* m_open;
    std::string m_folder;
    std::vector<std::string> m_names;  // in the list's order
    std::vector<std::string> m_paths;
};
