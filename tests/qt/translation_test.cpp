// What is in the operator's language, and what is the same in every language.
#include "qt/translation.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include "qt/forms.h"
#include "qt/in_german.h"

namespace vantrel::qt {
namespace {

TEST(Translation, KnowsEveryCaptionOfOurOwnForms) {
    const InGerman german;
    Forms forms;
    for (const platform::Form* form :
         {static_cast<platform::Form*>(&forms.about), static_cast<platform::Form*>(&forms.simulator)})
        for (const platform::Control* control : form->controls()) {
            if (control->name() == "lblVersion" || control->name() == "cmdHalt") continue;
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
        // the program's words
        {"frmMain", "Slewing", "Slewing"},
        {"frmMain", "Expose & Solve", "Expose & Solve"},
        {"dialog", "Vantrel is already running", "Vantrel is already running"},
    };
    for (const auto& row : rows) EXPECT_EQ(inWords(row.form, row.text).toStdString(), row.words);
}

}  // namespace
}  // namespace vantrel::qt
