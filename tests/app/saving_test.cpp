// SPDX-License-Identifier: MIT
// Save As and Copy Picture of the main window, with real dialogs and a simulated sound card.
#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QImage>
#include <QLineEdit>
#include <QTimer>
#include <filesystem>

#include "app/player_app.h"
#include "app/player_dlg.h"
#include "res/resource.h"
#include "tests/support/message_builder.h"
#include "tests/support/simulated_sound.h"
#include "tests/support/test_files.h"
#include "tests/support/ui_test.h"

namespace {

using ui_test::Modal;
using ui_test::PumpUntil;
using ui_test::WithModal;

// The progress dialog's button, null when it is not up.
QAbstractButton* CancelButton() {
    for (QWidget* widget : QApplication::allWidgets()) {
        auto* button = qobject_cast<QAbstractButton*>(widget);
        if (button != nullptr && button->text() == "Cancel") return button;
    }
    return nullptr;
}

class Saving : public testing::Test, protected SimulatedSound {
protected:
    Saving() {
        // The main window of the test before has ended the message loop: only a loop that was run is over
        // that.
        QTimer::singleShot(0, [] { QCoreApplication::exit(); });
        QApplication::exec();
        m_pDlg = new CPlayerDlg;
        m_hWnd = m_pDlg->GetSafeHwnd();
        m_app.m_pMainWnd = m_pDlg;
        m_pDlg->ShowWindow(SW_SHOW);
    }
    ~Saving() override {
        if (IsWindow(m_hWnd)) m_pDlg->DestroyWindow();
        ui_test::Pump();
    }

    void Command(UINT id) { SendMessage(m_hWnd, WM_COMMAND, id, 0); }
    void SaveAs(const std::string& name) {
        const auto choose = [&](const Modal&) {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            EXPECT_EQ(dialog->acceptMode(), QFileDialog::AcceptSave);
            // As it is typed: choosing a file waits for its folder, which is looked at by another thread.
            dialog->findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(name));
            dialog->metaObject()->invokeMethod(dialog, "accept");
        };
        EXPECT_EQ(WithModal([&] { Command(ID_FILE_SAVE_AS); }, choose).title, "Save As");
    }
    // Lets the sound run on until the saving has ended.
    bool Plays() {
        return PumpUntil([&] {
            m_sound->Advance(20);
            return CancelButton() == nullptr;
        });
    }

    TestFolder m_folder;
    CPlayerApp m_app;
    CPlayerDlg* m_pDlg = nullptr;
    HWND m_hWnd = nullptr;
};

TEST_F(Saving, WritesFilmAndSoundWhileTheMessagePlays) {
    m_pDlg->OpenMessage(CString(Sample("greeting-video.trv")));
    ASSERT_TRUE(PumpUntil([&] {
        m_sound->Advance(20);
        return m_sound->HeardCount() > 0;
    }));
    const std::size_t heard = m_sound->HeardCount();
    SaveAs(m_folder.Path("f.mkv"));
    EXPECT_NE(CancelButton(), nullptr);
    EXPECT_TRUE(Plays());
    EXPECT_GT(m_sound->HeardCount(), heard);
    EXPECT_GT(std::filesystem::file_size(m_folder.Path("f.mkv")), 500000U);
    SaveAs(m_folder.Path("s.wav"));
    EXPECT_TRUE(Plays());
    EXPECT_EQ(ReadBytes(m_folder.Path("s.wav")).size(), 44U + 520 * 320);
    EXPECT_EQ(m_folder.Names(), (std::vector<std::string>{"f.mkv", "s.wav"}));
}

// Cancelled, the window closed meanwhile, or not to be written at all: nothing is left.
TEST_F(Saving, LeavesNothingOfWhatIsNotWhole) {
    MessageBuilder(0, 36000).Speech(3600).Write(m_folder.Path("m.trv"));
    m_pDlg->OpenMessage(CString(m_folder.Path("m.trv")));
    SaveAs("/nowhere/s.wav");
    const std::string complaint = WithModal([] { PumpUntil([] { return CancelButton() == nullptr; }); }).text;
    EXPECT_NE(complaint.find("/nowhere/s.wav"), std::string::npos) << complaint;
    SaveAs(m_folder.Path("f.mp4"));
    ASSERT_NE(CancelButton(), nullptr);
    CancelButton()->click();
    EXPECT_TRUE(PumpUntil([] { return CancelButton() == nullptr; }));
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"m.trv"});
    SaveAs(m_folder.Path("f.mp4"));
    SendMessage(m_hWnd, WM_CLOSE, 0, 0);
    EXPECT_TRUE(PumpUntil([&] { return !IsWindow(m_hWnd); }));
    EXPECT_EQ(m_folder.Names(), std::vector<std::string>{"m.trv"});
}

TEST_F(Saving, ThePictureGoesToAFileAndToTheClipboard) {
    QGuiApplication::clipboard()->clear();
    Command(ID_EDIT_COPY);
    EXPECT_TRUE(QGuiApplication::clipboard()->image().isNull());
    m_pDlg->OpenMessage(CString(Sample("greeting-video.trv")));
    const auto copied = [&] {
        Command(ID_EDIT_COPY);
        return QGuiApplication::clipboard()->image().convertToFormat(QImage::Format_RGB32);
    };
    QImage black(320, 240, QImage::Format_RGB32);
    black.fill(Qt::black);
    EXPECT_EQ(copied(), black);
    Command(ID_PLAY_NEXT_PICTURE);
    ASSERT_TRUE(PumpUntil([&] { return copied() != black; }));
    SaveAs(m_folder.Path("p.png"));
    EXPECT_EQ(QImage(QString::fromStdString(m_folder.Path("p.png"))).convertToFormat(QImage::Format_RGB32),
              copied());
}

}  // namespace
