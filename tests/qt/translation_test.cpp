// What is in the operator's language, and what is the same in every language.
#include "qt/translation.h"

#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QRegularExpression>
#include <QTranslator>
#include <QXmlStreamReader>
#include <filesystem>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include "platform/user_machine.h"
#include "qt/layouts.h"
#include "qt/windows.h"

namespace vantrel::qt {
namespace {

using platform::Words;
namespace fs = std::filesystem;

const fs::path kRoot = VANTREL_SOURCE_DIR;

QString read(const fs::path& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) throw std::runtime_error("can't read " + path.string());
    return QString::fromUtf8(file.readAll());
}

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
            const auto* captioned = dynamic_cast<const platform::Captioned*>(control);
            for (const Words& words :
                 {captioned != nullptr ? captioned->captionWords() : Words(), control->toolTipWords()}) {
                const QString english = QString::fromStdString(words.english());
                const bool isWord = english.contains(QRegularExpression("[A-Za-z]{3}"));
                EXPECT_TRUE(!isWord || inWords(words) != english) << words.english();
            }
        }
}

/// Heading in the list of translations, and text.
using Texts = std::set<std::pair<QString, QString>>;

/// What stands in calls of Text::tr and Words::tr, literals put together as the compiler does. Of words that
/// aren't written out there, which nobody could translate, the text is empty.
void addTexts(const QString& source, Texts& texts) {
    static const QRegularExpression call(R"(\b(Text|Words)::tr\(\s*((?:"(?:[^"\\]|\\.)*"\s*)*))");
    static const QRegularExpression seam(R"("\s*")");
    for (auto found = call.globalMatch(source); found.hasNext();) {
        const auto match = found.next();
        QString text = match.captured(2).trimmed().remove(seam);
        text = text.mid(1, text.size() - 2).replace("\\n", "\n").replace("\\\"", "\"");
        if (const QString heading = match.captured(1); heading == "Words" || !text.isEmpty())
            texts.insert({heading, text});
    }
}

Texts textsBelow(const fs::path& folder) {
    Texts texts;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const fs::path& path = entry.path();
        if (path.stem() == "words" || (path.extension() != ".cpp" && path.extension() != ".h")) continue;
        addTexts(read(path), texts);
    }
    return texts;
}

/// Patterns that are in the list of translations, and what they are there.
std::map<QString, QString> translatedPatterns() {
    const QString list = read(kRoot / "src/qt/translations/vantrel_de.ts");
    QXmlStreamReader xml(list);
    std::map<QString, QString> patterns;
    QString heading, source;
    while (!xml.atEnd()) {
        if (!xml.readNextStartElement()) continue;
        if (xml.name() == QLatin1String("name")) heading = xml.readElementText();
        if (xml.name() == QLatin1String("source")) source = xml.readElementText();
        if (xml.name() == QLatin1String("translation") && heading == "Words")
            patterns[source] = xml.readElementText();
    }
    return patterns;
}

TEST(Translation, HasEveryTextOfTheSourcesAndNoOther) {
    QTranslator german;
    ASSERT_TRUE(german.load(
        "vantrel_de", QString::fromStdString((platform::sharedDataFolder() / "translations").string())));
    const Texts told = textsBelow(kRoot / "src");
    for (const Texts& texts : {told, textsBelow(kRoot / "tests/qt")})
        for (const auto& [heading, text] : texts)
            EXPECT_FALSE(german.translate(qPrintable(heading), text.toUtf8().constData()).isEmpty())
                << heading.toStdString() << "::tr(\"" << text.toStdString() << "\")";
    for (const auto& [pattern, translation] : translatedPatterns())
        EXPECT_TRUE(told.contains({"Words", pattern})) << pattern.toStdString();
}

TEST(Translation, HasAPlaceForEachPart) {
    const auto placesOf = [](const QString& pattern) {
        static const QRegularExpression place("%[1-9]");
        std::set<QString> places;
        for (auto found = place.globalMatch(pattern); found.hasNext();)
            places.insert(found.next().captured());
        return places;
    };
    const auto patterns = translatedPatterns();
    EXPECT_GT(patterns.size(), 100U);
    for (const auto& [pattern, translation] : patterns)
        EXPECT_EQ(placesOf(pattern), placesOf(translation)) << pattern.toStdString();
}

TEST(Translation, TakesNamesAndFiguresAlong) {
    const InGerman german;
    const Words exposing = Words::tr("%1: exposing", {Words::tr("Plate %1 of %2", {"2", "3"})});
    const struct {
        Words words;
        const char* german;
    } rows[] = {
        {Words::tr("%1, takes %2 to %3", {"120", "0", "480"}), "120, möglich 0 bis 480"},
        {Words::tr("%1, %2 of %3 s", {exposing, "3", "20"}), "Platte 2 von 3: belichtet, 3 von 20 s"},
        {Words::tr("Synced on %1", {"100 %1 \"Procyon\""}), "Auf 100 %1 \"Procyon\" abgeglichen"},
        {Words::tr("Stop"), "Stopp"},
        // the same in every language
        {"Stop", "Stop"},
        {"Synced on Procyon", "Synced on Procyon"},
        {"", ""},
    };
    for (const auto& row : rows) EXPECT_EQ(inWords(row.words).toStdString(), row.german);
}

TEST(Translation, IsWhatWindowsShow) {
    const InGerman german;
    Forms forms;
    platform::Form form(forms.screen, "frmNew", Words::tr("Welcome"), {});
    platform::Label label(form, "lblNew", Words::tr("%1 a press", {"2'"}));
    const platform::Button button(form, "cmdNew", "Stop");
    platform::ComboBox list(form, "cmbNew");
    list.setItems({{Words::tr("Parked")}, {"Parked"}});
    list.setText(Words::tr("Slewing"));
    PlainWindow window(form, forms.front);
    EXPECT_EQ(window.windowTitle(), "Willkommen");
    EXPECT_EQ(widgetOf<QLabel>(window, "lblNew").text(), "2' je Druck");
    EXPECT_EQ(widgetOf<QPushButton>(window, "cmdNew").text(), "&Stop");
    const auto& shown = widgetOf<QComboBox>(window, "cmbNew");
    EXPECT_EQ(shown.itemText(0), "Geparkt");
    EXPECT_EQ(shown.itemText(1), "Parked");
    EXPECT_EQ(shown.placeholderText(), "Schwenkt");
    label.setCaption(Words::tr("Halt"));
    label.setToolTip(Words::tr("Mirrored"));
    EXPECT_EQ(widgetOf<QLabel>(window, "lblNew").toolTip(), "Gespiegelt");
    EXPECT_EQ(label.toolTip(), "Mirrored");
}

}  // namespace
}  // namespace vantrel::qt
