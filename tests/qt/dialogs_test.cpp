#include <QAbstractButton>
#include <QApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QFileDialog>
#include <QListWidget>
#include <QTextBrowser>
#include <QTimer>
#include <filesystem>
#include <fstream>
#include <functional>

#include <gtest/gtest.h>

#include "qt/light.h"
#include "qt/qt_desktop.h"
#include "qt/qt_dialogs.h"
#include "qt/temporary_home.h"
#include "qt/theme.h"
#include "support/temp_folder.h"

namespace vantrel::qt {
namespace {

/// Does something to the dialog that the next call opens, which waits for it.
void inTheDialog(const std::function<void(QDialog&)>& act) {
    QTimer::singleShot(0, [act] {
        auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        act(*dialog);
    });
}

class DialogsTest : public testing::Test {
  protected:
    DialogsTest() {
        std::filesystem::create_directories(home.paths().drives / "C" / "Images" / "Tonight");
        user.folders.map("C:\\Images", home.paths().drives / "C" / "Images");
    }

    TemporaryHome home;
    platform::UserMachine user{home.paths()};
    Theme theme;
    QtDialogs dialogs{user.folders, "C:\\Images"};
    const std::vector<platform::Dialogs::Choice> drivers{{"A.Telescope", "First mount"},
                                                         {"B.Telescope", "Second mount"}};
};

TEST_F(DialogsTest, AChosenFolderComesBackAsAFolderText) {
    inTheDialog([&](QDialog& dialog) {
        auto& chooser = dynamic_cast<QFileDialog&>(dialog);
        chooser.selectFile(QString::fromStdString((user.folders.real("C:\\Images") / "Tonight").string()));
        dialog.accept();
    });
    EXPECT_EQ(dialogs.chooseFolder("Set Image Path"), "C:\\Images\\Tonight");
    inTheDialog([](QDialog& dialog) { dialog.reject(); });
    EXPECT_EQ(dialogs.chooseFolder("Set Image Path"), "");
}

TEST_F(DialogsTest, AFileComesBackAsItsPathAndTheNextBeginsThere) {
    const auto folder = user.folders.real("C:\\Images") / "Tonight";
    test::writeFile(folder / "M31.fits", "x");
    inTheDialog([&](QDialog& dialog) {
        dynamic_cast<QFileDialog&>(dialog).selectFile(QString::fromStdString((folder / "M31.fits").string()));
        dialog.accept();
    });
    EXPECT_EQ(dialogs.chooseFile("Choose a picture"), "C:\\Images\\Tonight\\M31.fits");
    inTheDialog([&](QDialog& dialog) {
        EXPECT_EQ(dynamic_cast<QFileDialog&>(dialog).directory().absolutePath().toStdString(),
                  folder.string());
        dialog.reject();
    });
    EXPECT_EQ(dialogs.chooseFile("Choose a picture"), "");
}

TEST_F(DialogsTest, AChoiceBeginsWithTheCurrentOneAndComesBackById) {
    std::string first;
    inTheDialog([&](QDialog& dialog) {
        auto& list = *dialog.findChild<QListWidget*>();
        first = list.currentItem()->text().toStdString();
        list.setCurrentRow(0);
        dialog.accept();
    });
    EXPECT_EQ(dialogs.choose("Telescope Chooser", drivers, "B.Telescope"), "A.Telescope");
    EXPECT_EQ(first, "Second mount");
    inTheDialog([](QDialog& dialog) {
        auto& list = *dialog.findChild<QListWidget*>();
        list.setCurrentRow(0);
        Q_EMIT list.itemActivated(list.item(0));  // a double click
    });
    EXPECT_EQ(dialogs.choose("Telescope Chooser", drivers, "B.Telescope"), "A.Telescope");
    inTheDialog([](QDialog& dialog) { dialog.reject(); });
    EXPECT_EQ(dialogs.choose("Telescope Chooser", drivers, "B.Telescope"), "");
    inTheDialog([](QDialog& dialog) { dialog.accept(); });
    EXPECT_EQ(dialogs.choose("Telescope Chooser", drivers, "C.Telescope"), "") << "nothing was chosen";
}

TEST_F(DialogsTest, GiveNothingButRedLightByNight) {
    theme.setNight(true);
    const auto check = [](QDialog& dialog) {
        QApplication::processEvents();
        EXPECT_LE(foreignLight(dialog.grab().toImage()), 0) << dialog.windowTitle().toStdString();
        dialog.reject();
    };
    inTheDialog(check);
    dialogs.chooseFolder("Set Image Path");
    test::writeFile(user.folders.real("C:\\Images") / "M31.fits", "");
    inTheDialog(check);
    dialogs.chooseFile("Choose a picture");
    inTheDialog(check);
    dialogs.choose("Telescope Chooser", drivers, "A.Telescope");
    for (const auto icon : {platform::Dialogs::Icon::kInformation, platform::Dialogs::Icon::kExclamation,
                            platform::Dialogs::Icon::kCritical}) {
        inTheDialog(check);
        dialogs.messageBox("Vantrel", "Vantrel is already running", icon,
                           platform::Dialogs::Buttons::kOkCancel);
    }
}

struct QtDesktopTest : testing::Test {
    QtDesktopTest() {
        for (const char* scheme : {"file", "https"})
            QDesktopServices::setUrlHandler(scheme, &browser, "setSource");
        qputenv("PATH", "/nowhere");  // no program to ask which files the desktop shows
    }
    ~QtDesktopTest() override {
        qputenv("PATH", path);
        for (const char* scheme : {"file", "https"}) QDesktopServices::unsetUrlHandler(scheme);
    }
    void put(const char* file) const {
        const std::filesystem::path whole = home.folder() / file;
        std::filesystem::create_directories(whole.parent_path());
        std::ofstream(whole) << "text";
    }

    QTextBrowser browser;  // has a slot for addresses
    const QByteArray path = qgetenv("PATH");
    const TemporaryHome home;
    platform::UserMachine user{home.paths()};
};

TEST_F(QtDesktopTest, OpensFilesAndPages) {
    QtDesktop desktop(user.folders, {});
    const std::string file = (home.folder() / "Log.txt").string();
    for (const std::string& address : {std::string("https://example.org/help"), "file://" + file}) {
        desktop.open(address.starts_with("file") ? file : address);
        EXPECT_EQ(browser.source().toString().toStdString(), address);
    }
}

TEST_F(QtDesktopTest, ShowsTheManualsPagesInPlaceOfHelpThatIsMissingOrThatNothingShows) {
    platform::FolderMap folders(home.folder());
    folders.map("C:\\Program Files\\Vantrel", home.folder());
    const QtDesktop desktop(folders, {});
    const std::string help = desktop.programFolder() + "\\Vantrel Help.chm";
    EXPECT_EQ(desktop.shownFor(help), home.folder() / "Vantrel Help.chm") << "neither is there";
    put("manual/index.html");
    EXPECT_EQ(desktop.shownFor(help), home.folder() / "manual/index.html");
    put("Vantrel Help.chm");
    EXPECT_EQ(desktop.shownFor(help), home.folder() / "manual/index.html");
    EXPECT_EQ(desktop.shownFor("C:\\Other\\Vantrel.chm"), home.folder() / "c/Other/Vantrel.chm");
}

/// From the folder that the programs are built into, where there is something to build it with.
TEST_F(QtDesktopTest, TheManualIsBuiltWithTheProgram) {
    const QtDesktop desktop(user.folders, {});
    EXPECT_EQ(std::filesystem::exists(desktop.shownFor(desktop.programFolder() + "\\Vantrel Help.chm")),
              VANTREL_MANUAL != 0);
}

}  // namespace
}  // namespace vantrel::qt
