#pragma once
#include "library/store/Settings.h"
#include "library/store/Store.h"
#include "platform/MainQueue.h"
#include "platform/PreferencesWindow.h"

#include <chrono>
#include <memory>

namespace tunelark {

// The preferences' controls and values: every setting as its default, its current (stored) value and
// its trying (edited, previewed) value. Edits are previewed on the lyrics window at once and stored
// only on confirm. Main thread only.
class PreferenceVC : public PreferencesActions {
public:
    // The newest controller; set on creation, not emptied when its window closes.
    static inline PreferenceVC* shared = nullptr;
    static constexpr auto kPollInterval = std::chrono::milliseconds(100);

    PreferenceVC(PreferencesWindow& window, Store& store, MainQueue& queue);
    ~PreferenceVC() override;
    PreferenceVC(const PreferenceVC&) = delete;
    PreferenceVC& operator=(const PreferenceVC&) = delete;

    double defaultOneRowFontSize = LyricsStyle{}.oneRowFontSize;
    double defaultTwoRowsFontSize = LyricsStyle{}.twoRowsFontSize;
    Rgb defaultFontColor = LyricsStyle{}.fontColor;
    bool defaultKeepBackgroundColor = LyricsStyle{}.keepBackgroundColor;
    double currentOneRowFontSize = LyricsStyle{}.oneRowFontSize;
    double currentTwoRowsFontSize = LyricsStyle{}.twoRowsFontSize;
    Rgb currentFontColor = LyricsStyle{}.fontColor;
    bool currentKeepBackgroundColor = LyricsStyle{}.keepBackgroundColor;
    double tryingOneRowFontSize = LyricsStyle{}.oneRowFontSize;
    double tryingTwoRowsFontSize = LyricsStyle{}.twoRowsFontSize;
    Rgb tryingFontColor = LyricsStyle{}.fontColor;
    bool tryingKeepBackgroundColor = LyricsStyle{}.keepBackgroundColor;

    // Reads the stored values into current and trying, fills the controls, starts the poll.
    void loadSettings();
    // Takes what the user typed or picked since the last poll; previews only what changed.
    void pollEditedValues();
    // Puts the trying values and the lyrics window back to the current values.
    void revertToCurrent();
    void stopPollTimer() { pollTimer_.reset(); }

    void clickOneRowDefault() override;
    void clickOneRowReset() override;
    void clickTwoRowDefault() override;
    void clickTwoRowsReset() override;
    void clickColorReset() override;
    void clickColorDefault() override;
    void clickedKeepBackgroundColor(bool on) override;
    void clickConfirm() override;
    void clickCancel() override;

private:
    void pollSizeField(SizeField field);
    void applySizeValue(SizeField field, double value);
    void applyColorValue(const Rgb& color);
    void previewSize(SizeField field);

    PreferencesWindow& window_;
    Store& store_;
    MainQueue& queue_;
    std::unique_ptr<RepeatingTimer> pollTimer_;
};

}  // namespace tunelark
