#pragma once
#include "platform/PreferencesWindow.h"

#include <array>
#include <string>
#include <utility>

namespace tunelark::test {

// Holds its controls' values and closes like the real one: windowWillClose once, then nothing answers.
class FakePreferencesWindow : public PreferencesWindow {
public:
    void setActions(PreferencesActions* sink) override { actions = sink; }
    void setDelegate(PreferencesWindowDelegate* sink) override { delegate = sink; }
    std::string fieldText(SizeField field) const override { return closed ? "" : texts[index(field)]; }
    void setFieldText(SizeField field, const std::string& text) override {
        if (!closed) texts[index(field)] = text, ++fieldWrites[index(field)];
    }
    void setInputFilter(SizeField field, InputFilter filter) override { filters[index(field)] = std::move(filter); }
    Rgba colorWellColor() const override { return closed ? Rgba{} : wellColor; }
    void setColorWellColor(const Rgba& color) override { wellColor = closed ? wellColor : color; }
    void deactivateColorWell() override {}
    bool checkBoxOn() const override { return !closed && checkBox; }
    void setCheckBoxOn(bool on) override { checkBox = closed ? checkBox : on; }
    void show() override {}
    void close() override {
        if (closed || std::exchange(closing, true)) return;
        if (delegate != nullptr) delegate->windowWillClose();
        closed = true;
    }
    static std::size_t index(SizeField field) { return field == SizeField::OneRow ? 0 : 1; }

    PreferencesActions* actions = nullptr;
    PreferencesWindowDelegate* delegate = nullptr;
    std::array<std::string, 2> texts;  // one row, two rows
    std::array<int, 2> fieldWrites{};
    std::array<InputFilter, 2> filters;
    Rgba wellColor{0.2, 0.6, 0.9, 1};  // the layout's own colour before anything is loaded
    bool checkBox = false, closing = false, closed = false;
};

}  // namespace tunelark::test
