#pragma once
#include "platform/PreferencesWindow.h"

#include <array>
#include <string>

namespace tunelark::test {

// A preferences window that holds its controls' values, types through the input filter as a user
// would, and closes like the real one: the delegate hears windowWillClose once, then nothing answers.
class FakePreferencesWindow : public PreferencesWindow {
public:
    void setActions(PreferencesActions* sink) override { actions = sink; }
    void setDelegate(PreferencesWindowDelegate* sink) override { delegate = sink; }

    std::string fieldText(SizeField field) const override { return closed ? std::string() : texts[index(field)]; }
    void setFieldText(SizeField field, const std::string& text) override {
        if (closed) return;
        texts[index(field)] = text;
        ++fieldWrites[index(field)];
    }
    void setInputFilter(SizeField field, InputFilter filter) override { filters[index(field)] = std::move(filter); }

    Rgba colorWellColor() const override { return closed ? Rgba{} : wellColor; }
    void setColorWellColor(const Rgba& color) override {
        if (!closed) wellColor = color;
    }
    void deactivateColorWell() override { ++wellDeactivations; }

    bool checkBoxOn() const override { return !closed && checkBox; }
    void setCheckBoxOn(bool on) override {
        if (!closed) checkBox = on;
    }

    void show() override {
        if (!closed) ++showCount;
    }
    void close() override {
        if (closed || closing) return;
        closing = true;
        if (delegate != nullptr) delegate->windowWillClose();
        closed = true;
    }

    // Types one character at a time at the end of the field; refused keystrokes change nothing.
    // Returns the number of refused keystrokes.
    int type(SizeField field, const std::string& keys) {
        int refused = 0;
        for (char key : keys) {
            std::string proposed = texts[index(field)] + key;
            if (filters[index(field)] && !filters[index(field)](proposed))
                ++refused;
            else
                texts[index(field)] = proposed;
        }
        return refused;
    }
    // The user empties the field and types anew.
    int retype(SizeField field, const std::string& keys) {
        texts[index(field)].clear();
        return type(field, keys);
    }

    static std::size_t index(SizeField field) { return field == SizeField::OneRow ? 0 : 1; }

    PreferencesActions* actions = nullptr;
    PreferencesWindowDelegate* delegate = nullptr;
    std::array<std::string, 2> texts;
    std::array<int, 2> fieldWrites{};
    std::array<InputFilter, 2> filters;
    Rgba wellColor{0.2, 0.6, 0.9, 1};  // the layout's own colour before anything is loaded
    int wellDeactivations = 0;
    bool checkBox = false;
    int showCount = 0;
    bool closing = false;
    bool closed = false;
};

}  // namespace tunelark::test
