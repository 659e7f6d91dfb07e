// SPDX-License-Identifier: MIT
// The toolkit's own dialogs: message box and file dialog.
#include <QApplication>
#include <QDeadlineTimer>
#include <QFileDialog>
#include <QMessageBox>
#include <QPixmapCache>
#include <QWindow>

#include "platform/framework/heap.h"
#include "platform/qt/other_names.h"
#include "platform/qt/qt_toolkit.h"
#include "platform/qt/toolkit.h"

namespace {

// A window that was shown just now has no place on the screen yet, where a dialog could go into its middle.
void AwaitPlace(const QPointer<QDialog>& dialog) {
    const QDeadlineTimer patience(500);
    while (dialog != nullptr && dialog->parentWidget() != nullptr && !patience.hasExpired()) {
        const QWindow* window = dialog->parentWidget()->windowHandle();
        if (window == nullptr || window->isExposed() || dialog->parentWidget()->isMinimized()) return;
        QApplication::processEvents(QEventLoop::ExcludeUserInputEvents | QEventLoop::WaitForMoreEvents, 20);
    }
}

}  // namespace

int QtToolkit::RunDialog(HWND owner, QDialog* dialog) {
    const QPointer<QDialog> guard(dialog);
    m_modals.push_back({owner, nullptr, guard});
    // Messages that wait behind the one that is being handled have had their wake-up already.
    Wake();
    AwaitPlace(guard);
    // The owner may have gone meanwhile.
    const int result = guard == nullptr || WidgetOf(owner) == nullptr ? 0 : dialog->exec();
    std::erase_if(m_modals, [&](const Modal& modal) { return modal.dialog == guard; });
    return guard == nullptr ? static_cast<int>(QDialog::Rejected) : result;
}

namespace {

QWidget* OwnerWidget(HWND owner) {
    QWidget* widget = WidgetOf(owner);
    return widget == nullptr || !widget->window()->isVisible() ? nullptr : widget->window();
}

}  // namespace

void QtToolkit::MessageBox(HWND owner, const std::string& text, const std::string& caption, bool error) {
    const QPointer<QMessageBox> box(
        new QMessageBox(error ? QMessageBox::Critical : QMessageBox::NoIcon, QString::fromStdString(caption),
                        QString::fromStdString(text), QMessageBox::Ok, OwnerWidget(owner)));
    box->setTextFormat(Qt::PlainText);
    RunDialog(owner, box);
    delete box;
}

std::vector<std::string> QtToolkit::ChooseFiles(HWND owner, const std::string& title,
                                                const std::vector<std::string>& filters,
                                                const FileQuestion& question) {
    const QPointer<QFileDialog> dialog(new QFileDialog(OwnerWidget(owner), QString::fromStdString(title),
                                                       QString::fromStdString(question.folder)));
    QStringList names;
    for (std::size_t i = 0; i + 1 < filters.size(); i += 2) {
        // The toolkit takes the pattern from the last parentheses, and shows what stands before them. It gets
        // the pattern in either case of letters, as the framework compares names.
        const QString pattern = QString::fromStdString(filters[i + 1]);
        names << QStringLiteral("%1 (%2 %3)")
                     .arg(QString::fromStdString(filters[i]), pattern, pattern.toUpper());
    }
    dialog->setOption(QFileDialog::HideNameFilterDetails);
    dialog->setNameFilters(names);
    const OtherNames* others = nullptr;
    if (!question.saving) {
        dialog->setFileMode(question.several ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
        dialog->setAcceptMode(QFileDialog::AcceptOpen);
        dialog->setOption(QFileDialog::ReadOnly);
        others = new OtherNames(*dialog, question.several);
    } else {
        dialog->setFileMode(QFileDialog::AnyFile);
        dialog->setAcceptMode(QFileDialog::AcceptSave);
        const auto follow = [dialog](const QString& filter) {
            const auto ending = filter.lastIndexOf(QStringLiteral("(*.")) + 3;
            dialog->setDefaultSuffix(filter.mid(ending, filter.indexOf(QLatin1Char(' '), ending) - ending));
        };
        QObject::connect(dialog, &QFileDialog::filterSelected, dialog, follow);
        follow(names.value(0));
        dialog->selectFile(QString::fromStdString(question.name));
    }
    std::vector<std::string> chosen;
    if (RunDialog(owner, dialog) == QDialog::Accepted && dialog != nullptr) {
        if (others != nullptr) chosen = others->Paths();
        if (chosen.empty())
            for (const QString& path : dialog->selectedFiles()) chosen.push_back(path.toStdString());
    }
    delete dialog;
    // Its lists and icons take megabytes, in small blocks between others that stay; and each dialog leaves 20
    // KiB of icons, of its own keys, in the toolkit's cache.
    QPixmapCache::clear();
    _heapmin();
    return chosen;
}
