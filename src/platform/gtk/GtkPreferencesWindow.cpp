#include "platform/gtk/GtkPreferencesWindow.h"

#include "platform/Localized.h"
#include "platform/glib/GuardedCall.h"
#include "platform/gtk/JoinApplication.h"

#include <cstring>

namespace tunelark {
namespace {

constexpr const char* kButtonKey = "tunelark-button";

GtkWidget* leftLabel(const std::string& text) {
    GtkWidget* label = gtk_label_new(text.c_str());
    gtk_widget_set_halign(label, GTK_ALIGN_START);
    return label;
}

GtkWidget* sectionTitle(const std::string& text) {
    GtkWidget* label = gtk_label_new(nullptr);
    gchar* markup = g_markup_printf_escaped("<b>%s</b>", text.c_str());
    gtk_label_set_markup(GTK_LABEL(label), markup);
    g_free(markup);
    gtk_widget_set_halign(label, GTK_ALIGN_START);
    return label;
}

// The byte offset of a character offset in a UTF-8 text, clamped to its end.
std::size_t byteOffset(const std::string& text, gint characters) {
    glong length = g_utf8_strlen(text.c_str(), -1);
    if (characters < 0 || characters > length) characters = gint(length);
    return std::size_t(g_utf8_offset_to_pointer(text.c_str(), characters) - text.c_str());
}

}  // namespace

GtkPreferencesWindow::GtkPreferencesWindow(GtkWindow* parent) { buildWindow(parent); }

GtkPreferencesWindow::~GtkPreferencesWindow() {
    actions_ = nullptr;
    delegate_ = nullptr;
    destroyWidgets();
}

void GtkPreferencesWindow::buildWindow(GtkWindow* parent) {
    window_ = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    GtkWindow* window = GTK_WINDOW(window_);
    gtk_window_set_title(window, localized("Preferences").c_str());
    joinRunningApplication(window);
    gtk_window_set_resizable(window, FALSE);
    gtk_window_set_type_hint(window, GDK_WINDOW_TYPE_HINT_DIALOG);
    if (parent != nullptr) {
        gtk_window_set_transient_for(window, parent);
        gtk_window_set_position(window, GTK_WIN_POS_CENTER_ON_PARENT);
    } else {
        gtk_window_set_position(window, GTK_WIN_POS_CENTER);
    }
    g_signal_connect(window_, "delete-event", G_CALLBACK(onDelete), this);

    GtkWidget* grid = gtk_grid_new();
    GtkGrid* g = GTK_GRID(grid);
    gtk_grid_set_row_spacing(g, 10);
    gtk_grid_set_column_spacing(g, 10);
    g_object_set(grid, "margin", 20, nullptr);
    gtk_grid_attach(g, sectionTitle(localized("Lyrics window")), 0, 0, 5, 1);
    makeSizeRow(g, 1, localized("One-row font size"), SizeField::OneRow, Button::OneRowDefault, Button::OneRowReset);
    makeSizeRow(g, 2, localized("Two-rows font size"), SizeField::TwoRows, Button::TwoRowsDefault, Button::TwoRowsReset);
    makeColorRow(g, 3);

    checkBox_ = gtk_check_button_new_with_label(localized("Keep the grey background behind the lyrics").c_str());
    g_signal_connect(checkBox_, "toggled", G_CALLBACK(onToggled), this);
    gtk_grid_attach(g, checkBox_, 0, 4, 5, 1);

    gtk_grid_attach(g, gtk_separator_new(GTK_ORIENTATION_HORIZONTAL), 0, 5, 5, 1);
    GtkWidget* buttons = gtk_button_box_new(GTK_ORIENTATION_HORIZONTAL);
    gtk_button_box_set_layout(GTK_BUTTON_BOX(buttons), GTK_BUTTONBOX_END);
    gtk_box_set_spacing(GTK_BOX(buttons), 8);
    gtk_container_add(GTK_CONTAINER(buttons), makeButton(localized("Cancel"), Button::Cancel));
    GtkWidget* confirm = makeButton(localized("Confirm"), Button::Confirm);
    gtk_style_context_add_class(gtk_widget_get_style_context(confirm), GTK_STYLE_CLASS_SUGGESTED_ACTION);
    gtk_container_add(GTK_CONTAINER(buttons), confirm);
    gtk_grid_attach(g, buttons, 0, 6, 5, 1);
    gtk_container_add(GTK_CONTAINER(window_), grid);
    gtk_widget_show_all(grid);
}

GtkWidget* GtkPreferencesWindow::makeSizeRow(GtkGrid* grid, int row, const std::string& title, SizeField field,
                                             Button byDefault, Button reset) {
    GtkWidget* widget = gtk_entry_new();
    gtk_entry_set_width_chars(GTK_ENTRY(widget), 7);
    gtk_entry_set_alignment(GTK_ENTRY(widget), 1);
    g_signal_connect(widget, "insert-text", G_CALLBACK(onInsertText), this);
    g_signal_connect(widget, "delete-text", G_CALLBACK(onDeleteText), this);
    entry(field).widget = widget;
    gtk_grid_attach(grid, leftLabel(title), 0, row, 1, 1);
    gtk_grid_attach(grid, widget, 1, row, 1, 1);
    gtk_grid_attach(grid, leftLabel("pt"), 2, row, 1, 1);
    gtk_grid_attach(grid, makeButton(localized("Reset"), reset), 3, row, 1, 1);
    gtk_grid_attach(grid, makeButton(localized("Default"), byDefault), 4, row, 1, 1);
    return widget;
}

void GtkPreferencesWindow::makeColorRow(GtkGrid* grid, int row) {
    GtkWidget* well = gtk_button_new();
    gtk_widget_set_tooltip_text(well, localized("Choose the colour of the lyrics").c_str());
    swatch_ = gtk_drawing_area_new();
    gtk_widget_set_size_request(swatch_, 56, 18);
    g_signal_connect(swatch_, "draw", G_CALLBACK(onDrawSwatch), this);
    gtk_container_add(GTK_CONTAINER(well), swatch_);
    g_signal_connect(well, "clicked", G_CALLBACK(onWellClicked), this);
    gtk_grid_attach(grid, leftLabel(localized("Text colour")), 0, row, 1, 1);
    gtk_grid_attach(grid, well, 1, row, 2, 1);
    gtk_grid_attach(grid, makeButton(localized("Reset"), Button::ColorReset), 3, row, 1, 1);
    gtk_grid_attach(grid, makeButton(localized("Default"), Button::ColorDefault), 4, row, 1, 1);
}

GtkWidget* GtkPreferencesWindow::makeButton(const std::string& title, Button which) {
    GtkWidget* button = gtk_button_new_with_label(title.c_str());
    g_object_set_data(G_OBJECT(button), kButtonKey, GINT_TO_POINTER(int(which) + 1));
    g_signal_connect(button, "clicked", G_CALLBACK(onButtonClicked), this);
    return button;
}

std::string GtkPreferencesWindow::fieldText(SizeField field) const {
    if (!open()) return {};
    return gtk_entry_get_text(GTK_ENTRY(entry(field).widget));
}

void GtkPreferencesWindow::setFieldText(SizeField field, const std::string& text) {
    if (!open()) return;
    settingControl_ = true;
    gtk_entry_set_text(GTK_ENTRY(entry(field).widget), text.c_str());
    settingControl_ = false;
}

void GtkPreferencesWindow::setInputFilter(SizeField field, InputFilter filter) { entry(field).filter = std::move(filter); }

Rgba GtkPreferencesWindow::colorWellColor() const { return open() ? wellColor_ : Rgba{}; }

void GtkPreferencesWindow::setColorWellColor(const Rgba& color) {
    if (!open()) return;
    wellColor_ = {color.red, color.green, color.blue, 1};
    gtk_widget_queue_draw(swatch_);
    if (panel_ != nullptr) {
        GdkRGBA rgba{wellColor_.red, wellColor_.green, wellColor_.blue, 1};
        settingControl_ = true;
        gtk_color_chooser_set_rgba(GTK_COLOR_CHOOSER(panel_), &rgba);
        settingControl_ = false;
    }
}

void GtkPreferencesWindow::deactivateColorWell() {
    if (panel_ != nullptr) gtk_widget_hide(panel_);
}

bool GtkPreferencesWindow::checkBoxOn() const {
    return open() && gtk_toggle_button_get_active(GTK_TOGGLE_BUTTON(checkBox_));
}

void GtkPreferencesWindow::setCheckBoxOn(bool on) {
    if (!open()) return;
    settingControl_ = true;
    gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(checkBox_), on);
    settingControl_ = false;
}

void GtkPreferencesWindow::show() {
    if (!open()) return;
    gtk_widget_show(window_);
    gtk_window_present(GTK_WINDOW(window_));
}

void GtkPreferencesWindow::close() {
    if (!open() || closing_) return;
    closing_ = true;
    if (delegate_ != nullptr) delegate_->windowWillClose();
    destroyWidgets();
    closed_ = true;
}

void GtkPreferencesWindow::destroyWidgets() {
    if (panel_ != nullptr) gtk_widget_destroy(panel_);
    panel_ = nullptr;
    if (window_ != nullptr) gtk_widget_destroy(window_);
    window_ = nullptr;
}

void GtkPreferencesWindow::openColorPanel() {
    if (panel_ == nullptr) {
        panel_ = gtk_color_chooser_dialog_new(localized("Lyrics colour").c_str(), GTK_WINDOW(window_));
        gtk_color_chooser_set_use_alpha(GTK_COLOR_CHOOSER(panel_), FALSE);
        g_signal_connect(panel_, "notify::rgba", G_CALLBACK(onPanelColor), this);
        g_signal_connect(panel_, "response", G_CALLBACK(onPanelResponse), this);
    }
    colorBeforePanel_ = wellColor_;
    GdkRGBA rgba{wellColor_.red, wellColor_.green, wellColor_.blue, 1};
    settingControl_ = true;
    gtk_color_chooser_set_rgba(GTK_COLOR_CHOOSER(panel_), &rgba);
    settingControl_ = false;
    gtk_window_present(GTK_WINDOW(panel_));
}

void GtkPreferencesWindow::press(Button which) {
    if (actions_ == nullptr || !open()) return;
    switch (which) {
        case Button::OneRowDefault: actions_->clickOneRowDefault(); break;
        case Button::OneRowReset: actions_->clickOneRowReset(); break;
        case Button::TwoRowsDefault: actions_->clickTwoRowDefault(); break;
        case Button::TwoRowsReset: actions_->clickTwoRowsReset(); break;
        case Button::ColorReset: actions_->clickColorReset(); break;
        case Button::ColorDefault: actions_->clickColorDefault(); break;
        case Button::Confirm: actions_->clickConfirm(); break;
        case Button::Cancel: actions_->clickCancel(); break;
    }
}

// Stops the edit when the field's filter refuses the text it would leave.
void GtkPreferencesWindow::filterEdit(GtkEditable* editable, const char* signal,
                                      const std::function<void(std::string&)>& edit) {
    if (settingControl_) return;
    const InputFilter& filter = entries_[0].widget == GTK_WIDGET(editable) ? entries_[0].filter : entries_[1].filter;
    if (!filter) return;
    std::string proposed = gtk_entry_get_text(GTK_ENTRY(editable));
    edit(proposed);
    if (filter(proposed)) return;
    g_signal_stop_emission_by_name(editable, signal);
    gtk_widget_error_bell(GTK_WIDGET(editable));
}

void GtkPreferencesWindow::onInsertText(GtkEditable* editable, gchar* text, gint length, gint* position,
                                        gpointer data) noexcept {
    auto* self = static_cast<GtkPreferencesWindow*>(data);
    guardedCall("preferences typing", [&] {
        self->filterEdit(editable, "insert-text", [&](std::string& proposed) {
            proposed.insert(byteOffset(proposed, *position), text, length < 0 ? std::strlen(text) : std::size_t(length));
        });
    });
}

void GtkPreferencesWindow::onDeleteText(GtkEditable* editable, gint start, gint end, gpointer data) noexcept {
    auto* self = static_cast<GtkPreferencesWindow*>(data);
    guardedCall("preferences deleting", [&] {
        self->filterEdit(editable, "delete-text", [&](std::string& proposed) {
            std::size_t from = byteOffset(proposed, start);
            std::size_t to = byteOffset(proposed, end);
            if (to > from) proposed.erase(from, to - from);
        });
    });
}

void GtkPreferencesWindow::onButtonClicked(GtkButton* button, gpointer data) noexcept {
    auto* self = static_cast<GtkPreferencesWindow*>(data);
    int which = GPOINTER_TO_INT(g_object_get_data(G_OBJECT(button), kButtonKey)) - 1;
    guardedCall("preferences button", [&] { self->press(Button(which)); });
}

void GtkPreferencesWindow::onToggled(GtkToggleButton* button, gpointer data) noexcept {
    auto* self = static_cast<GtkPreferencesWindow*>(data);
    guardedCall("preferences check box", [&] {
        if (self->settingControl_ || self->actions_ == nullptr) return;
        self->actions_->clickedKeepBackgroundColor(gtk_toggle_button_get_active(button));
    });
}

gboolean GtkPreferencesWindow::onDelete(GtkWidget*, GdkEvent*, gpointer data) noexcept {
    auto* self = static_cast<GtkPreferencesWindow*>(data);
    guardedCall("preferences close", [&] { self->close(); });
    return TRUE;
}

gboolean GtkPreferencesWindow::onDrawSwatch(GtkWidget* widget, cairo_t* cr, gpointer data) noexcept {
    auto* self = static_cast<GtkPreferencesWindow*>(data);
    double width = gtk_widget_get_allocated_width(widget);
    double height = gtk_widget_get_allocated_height(widget);
    double radius = 3;
    cairo_new_sub_path(cr);
    cairo_arc(cr, width - radius, radius, radius, -G_PI / 2, 0);
    cairo_arc(cr, width - radius, height - radius, radius, 0, G_PI / 2);
    cairo_arc(cr, radius, height - radius, radius, G_PI / 2, G_PI);
    cairo_arc(cr, radius, radius, radius, G_PI, 3 * G_PI / 2);
    cairo_close_path(cr);
    cairo_set_source_rgb(cr, self->wellColor_.red, self->wellColor_.green, self->wellColor_.blue);
    cairo_fill_preserve(cr);
    cairo_set_source_rgba(cr, 0, 0, 0, 0.35);
    cairo_set_line_width(cr, 1);
    cairo_stroke(cr);
    return TRUE;
}

void GtkPreferencesWindow::onWellClicked(GtkButton*, gpointer data) noexcept {
    auto* self = static_cast<GtkPreferencesWindow*>(data);
    guardedCall("preferences colour well", [&] { self->openColorPanel(); });
}

void GtkPreferencesWindow::onPanelColor(GObject* panel, GParamSpec*, gpointer data) noexcept {
    auto* self = static_cast<GtkPreferencesWindow*>(data);
    guardedCall("preferences colour panel", [&] {
        if (self->settingControl_ || !self->open()) return;
        GdkRGBA rgba;
        gtk_color_chooser_get_rgba(GTK_COLOR_CHOOSER(panel), &rgba);
        self->wellColor_ = {rgba.red, rgba.green, rgba.blue, 1};
        gtk_widget_queue_draw(self->swatch_);
    });
}

void GtkPreferencesWindow::onPanelResponse(GtkDialog* panel, gint response, gpointer data) noexcept {
    auto* self = static_cast<GtkPreferencesWindow*>(data);
    guardedCall("preferences colour panel", [&] {
        // The well already follows the panel; cancelling takes back what was picked since it opened.
        if (self->open()) {
            GdkRGBA rgba;
            gtk_color_chooser_get_rgba(GTK_COLOR_CHOOSER(panel), &rgba);
            self->wellColor_ = response == GTK_RESPONSE_OK ? Rgba{rgba.red, rgba.green, rgba.blue, 1}
                                                           : self->colorBeforePanel_;
            gtk_widget_queue_draw(self->swatch_);
        }
        gtk_widget_hide(GTK_WIDGET(panel));
    });
}

}  // namespace tunelark
