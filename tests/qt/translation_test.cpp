// What is in the operator's language, and what is the same in every language.
#include "qt/translation.h"

#include <QFile>
#include <QRegularExpression>
#include <QTranslator>
#include <filesystem>

#include <gtest/gtest.h>

#include "platform/user_machine.h"
#include "qt/forms.h"
#include "qt/in_german.h"

namespace vantrel::qt {
namespace {

TEST(Translation, KnowsEveryCaptionOfOurOwnForms) {
    const InGerman german;
    Forms forms;
    for (const platform::Form* form :
         {static_cast<platform::Form*>(&forms.about), static_cast<platform::Form*>(&forms.simulator),
          static_cast<platform::Form*>(&forms.devices), static_cast<platform::Form*>(&forms.solvePicture),
          static_cast<platform::Form*>(&forms.welcome)})
        for (const platform::Control* control : form->controls()) {
            if (control->name() == "lblVersion" || control->name() == "cmdHalt" || control->name() == "cmdOK")
                continue;
            std::string caption;
            if (const auto* label = dynamic_cast<const platform::Label*>(control)) caption = label->caption();
            if (const auto* button = dynamic_cast<const platform::Button*>(control))
                caption = button->caption();
            if (const auto* box = dynamic_cast<const platform::CheckBox*>(control)) caption = box->caption();
            for (const std::string& text : {caption, control->toolTip()}) {
                const bool isWord = QString::fromStdString(text).contains(QRegularExpression("[A-Za-z]{3}"));
                EXPECT_TRUE(!isWord || inWords(form->name(), text) != QString::fromStdString(text)) << text;
            }
        }
}

/// The literals in calls of Text::tr, put together as the compiler does.
QStringList textsIn(const QString& source) {
    static const QRegularExpression call(R"(Text::tr\(\s*((?:"(?:[^"\\]|\\.)*"\s*)+))");
    static const QRegularExpression seam(R"("\s+")");
    QStringList texts;
    for (auto found = call.globalMatch(source); found.hasNext();) {
        QString text = found.next().captured(1).trimmed().remove(seam);
        texts << text.mid(1, text.size() - 2).replace("\\n", "\n").replace("\\\"", "\"");
    }
    return texts;
}

TEST(Translation, HasEveryTextOfTheWindowsThemselves) {
    QTranslator german;
    ASSERT_TRUE(german.load(
        "vantrel_de", QString::fromStdString((platform::sharedDataFolder() / "translations").string())));
    int texts = 0;
    for (const auto& entry : std::filesystem::directory_iterator(VANTREL_QT_SOURCES)) {
        if (entry.path().extension() != ".cpp") continue;
        QFile file(entry.path());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        for (const QString& text : textsIn(QString::fromUtf8(file.readAll()))) {
            ++texts;
            EXPECT_FALSE(german.translate("Text", text.toUtf8().constData()).isEmpty())
                << entry.path().filename() << ": " << text.toStdString();
        }
    }
    EXPECT_GT(texts, 0);
}

TEST(Translation, TakesNamesAndFiguresAlong) {
    const InGerman german;
    const struct {
        const char* form;
        const char* text;
        const char* words;
    } rows[] = {
        {"frmSimulator", "Iota Ceti, -9°, 0h 30m west - best", "Iota Ceti, -9°, 0h 30m westlich - am besten"},
        {"frmSimulator", "Procyon, +5°, on the meridian - good", "Procyon, +5°, im Meridian - gut"},
        {"frmSimulator", "Procyon is 12\" off the middle.", "Procyon steht 12\" neben der Mitte."},
        {"frmSimulator", "1.00\" a pixel, 1.39° by 1.04°", "1.00\" je Pixel, 1.39° mal 1.04°"},
        {"frmSimulator", "15' a press", "15' je Druck"},
        {"dialog", "Telescope Chooser", "Teleskop wählen"},
        {"frmDevices", "120, takes 0 to 480", "120, möglich 0 bis 480"},
        {"frmSolvePicture", "Solved in 1.2 s by 85 stars, off by 0.41\" on average",
         "In 1.2 s mit 85 Sternen gelöst, im Mittel 0.41\" daneben"},
        {"frmSolvePicture", "Solved in 1.2 s by 85 stars, off by 0.41\" on average; the picture is mirrored",
         "In 1.2 s mit 85 Sternen gelöst, im Mittel 0.41\" daneben; das Bild ist gespiegelt"},
        {"frmDevices", "-9.5 °C, cooler at 40 %", "-9.5 °C, Kühlung bei 40 %"},
        // the program's words
        {"frmMain", "Error Amplitude", "Error Amplitude"},
        {"frmMain", "Expose & Solve", "Expose & Solve"},
        {"dialog", "Vantrel is already running", "Vantrel is already running"},
    };
    for (const auto& row : rows) EXPECT_EQ(inWords(row.form, row.text).toStdString(), row.words);
}

}  // namespace
}  // namespace vantrel::qt
