// The imaging program's window: its picture, and what an observer does with it.
#pragma once

#include <QWidget>
#include <functional>
#include <optional>

#include "correction/star_guide.h"
#include "imaging/shown_image.h"
#include "platform/settings_root.h"
#include "qt/front.h"
#include "qt/window_place.h"

class QAction;
class QLabel;
class QToolBar;

namespace vantrel::qt {

class GaugeBar;
class HistogramBar;
class ImageView;

/// Opens by itself, without taking the keyboard, when there is an image; once the operator has closed it, it
/// stays closed until showByOperator. Exposures go on either way. Its place and choices are kept in the
/// settings' section "ImageWindow".
class ImageWindow : public QWidget {
  public:
    /// What it is given must outlive it.
    ImageWindow(imaging::OpenDocuments& documents, platform::SettingsRoot& settings, const Front& front);
    ~ImageWindow() override;

    /// Opens the window, or brings it in front of the others.
    void showByOperator();

    /// What it can't do without, and where it is to stand; both with its frame.
    QSize leastSize() const;
    void standIn(const QRect& place);

    /// Shows from now on where the guided star is and how far it has to go. The guide must outlive the
    /// window.
    void followGuide(correction::StarGuide& guide);
    void tellGuidance(const std::optional<correction::Guidance>& guidance);

  protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
    QAction* addCommand(const char* name, const QString& text, const QString& tip,
                        const QList<QKeySequence>& keys, std::function<void()> command);
    QAction* addSwitch(const char* name, const QString& text, const QString& tip, const QKeySequence& key,
                       std::function<void(bool)> command);
    void addCommands();
    QWidget* statusLine();
    QWidget* guidanceLine();
    QLabel* addStatus(const char* name, const QString& widest, const QString& meaning);

    void follow();
    void tellPixel();
    void tellView();
    void applyLook();
    void showFull(bool full);

    QRect storedPlace() const;
    void rememberPlace(const QRect& place) const;
    bool chosen(const char* key) const;
    void remember(const char* key, const std::string& value) const;

    platform::SettingsRoot& settings_;
    Front front_;
    imaging::ShownImage image_;
    ImageView* view_;
    HistogramBar* histogram_;
    QToolBar* bar_;
    QWidget* status_ = nullptr;
    QWidget* guidance_ = nullptr;
    QLabel* starToTarget_ = nullptr;
    GaugeBar* wayLeft_ = nullptr;
    QLabel* position_ = nullptr;
    QLabel* value_ = nullptr;
    QLabel* star_ = nullptr;
    QLabel* scale_ = nullptr;
    QLabel* size_ = nullptr;
    QAction* automatic_ = nullptr;
    QAction* inverted_ = nullptr;
    QAction* green_ = nullptr;
    QAction* full_ = nullptr;
    WindowPlace place_;
    bool closedByOperator_ = false;
    platform::Subscription following_, moving_, look_, guided_;
};

}  // namespace vantrel::qt
