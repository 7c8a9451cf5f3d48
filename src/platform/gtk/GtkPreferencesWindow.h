#pragma once
#include "platform/PreferencesWindow.h"

#include <gtk/gtk.h>

#include <array>
#include <functional>
#include <string>

namespace tunelark {

// The preferences window: a small dialog-like window with the two size entries, a colour well that
// opens a colour chooser (the colour panel), the check box and the eight buttons. The well follows the
// chooser while the user picks, so edits show on the lyrics window before the chooser is closed.
class GtkPreferencesWindow : public PreferencesWindow {
public:
    // parent may be null; the window is then placed by the window manager.
    explicit GtkPreferencesWindow(GtkWindow* parent = nullptr);
    ~GtkPreferencesWindow() override;
    GtkPreferencesWindow(const GtkPreferencesWindow&) = delete;
    GtkPreferencesWindow& operator=(const GtkPreferencesWindow&) = delete;

    void setActions(PreferencesActions* actions) override { actions_ = actions; }
    void setDelegate(PreferencesWindowDelegate* delegate) override { delegate_ = delegate; }

    std::string fieldText(SizeField field) const override;
    void setFieldText(SizeField field, const std::string& text) override;
    void setInputFilter(SizeField field, InputFilter filter) override;

    Rgba colorWellColor() const override;
    void setColorWellColor(const Rgba& color) override;
    void deactivateColorWell() override;

    bool checkBoxOn() const override;
    void setCheckBoxOn(bool on) override;

    void show() override;
    void close() override;

private:
    struct Entry {
        GtkWidget* widget = nullptr;
        InputFilter filter;
    };
    enum class Button { OneRowDefault, OneRowReset, TwoRowsDefault, TwoRowsReset, ColorReset, ColorDefault,
                        Confirm, Cancel };

    bool open() const { return window_ != nullptr && !closed_; }
    Entry& entry(SizeField field) { return entries_[field == SizeField::OneRow ? 0 : 1]; }
    const Entry& entry(SizeField field) const { return entries_[field == SizeField::OneRow ? 0 : 1]; }
    void buildWindow(GtkWindow* parent);
    GtkWidget* makeSizeRow(GtkGrid* grid, int row, const std::string& title, SizeField field, Button byDefault,
                           Button reset);
    GtkWidget* makeButton(const std::string& title, Button which);
    void makeColorRow(GtkGrid* grid, int row);
    void openColorPanel();
    void press(Button which);
    void destroyWidgets();
    void filterEdit(GtkEditable* editable, const char* signal, const std::function<void(std::string&)>& edit);

    static void onInsertText(GtkEditable* editable, gchar* text, gint length, gint* position, gpointer self) noexcept;
    static void onDeleteText(GtkEditable* editable, gint start, gint end, gpointer self) noexcept;
    static void onButtonClicked(GtkButton* button, gpointer self) noexcept;
    static void onToggled(GtkToggleButton* button, gpointer self) noexcept;
    static gboolean onDelete(GtkWidget* widget, GdkEvent* event, gpointer self) noexcept;
    static gboolean onDrawSwatch(GtkWidget* widget, cairo_t* cr, gpointer self) noexcept;
    static void onWellClicked(GtkButton* button, gpointer self) noexcept;
    static void onPanelColor(GObject* panel, GParamSpec* spec, gpointer self) noexcept;
    static void onPanelResponse(GtkDialog* panel, gint response, gpointer self) noexcept;

    GtkWidget* window_ = nullptr;
    std::array<Entry, 2> entries_;
    GtkWidget* swatch_ = nullptr;
    GtkWidget* checkBox_ = nullptr;
    GtkWidget* panel_ = nullptr;  // the colour chooser, made on first use

    PreferencesActions* actions_ = nullptr;
    PreferencesWindowDelegate* delegate_ = nullptr;

    Rgba wellColor_{0.5, 0.5, 0.5, 1};
    Rgba colorBeforePanel_;
    // Set while code, not the user, changes a control, so that no filter or action runs.
    bool settingControl_ = false;
    bool closing_ = false;
    bool closed_ = false;
};

}  // namespace tunelark
