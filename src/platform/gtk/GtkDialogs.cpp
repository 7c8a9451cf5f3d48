#include "platform/gtk/GtkDialogs.h"

#include "platform/Localized.h"
#include "platform/glib/GObjectHandles.h"

#include <gtk/gtk.h>

#include <cctype>
#include <utility>

namespace tunelark {
namespace {

int runAndDestroy(GtkWidget* dialog) {
    const int response = gtk_dialog_run(GTK_DIALOG(dialog));
    gtk_widget_destroy(dialog);
    return response;
}

GtkWidget* messageDialog(GtkWindow* parent, GtkMessageType type, GtkButtonsType buttons, const std::string& text) {
    GtkWidget* dialog = gtk_message_dialog_new(parent, GtkDialogFlags(GTK_DIALOG_MODAL | GTK_DIALOG_DESTROY_WITH_PARENT),
                                               type, buttons, "%s", text.c_str());
    gtk_window_set_title(GTK_WINDOW(dialog), "Tunelark");
    return dialog;
}

}  // namespace

GtkDialogs::GtkDialogs(std::function<GtkWindow*()> parent) : parent_(std::move(parent)) {}

void GtkDialogs::alert(const std::string& message) {
    runAndDestroy(messageDialog(parent_ ? parent_() : nullptr, GTK_MESSAGE_INFO, GTK_BUTTONS_OK, message));
}

int GtkDialogs::ask(const std::string& message, const std::string& informative,
                    const std::vector<std::string>& buttons) {
    GtkWidget* dialog = messageDialog(parent_ ? parent_() : nullptr, GTK_MESSAGE_WARNING, GTK_BUTTONS_NONE, message);
    if (!informative.empty()) {
        gtk_message_dialog_format_secondary_text(GTK_MESSAGE_DIALOG(dialog), "%s", informative.c_str());
    }
    // Added last to first, so that the first button, the default one, ends up on the right.
    for (auto i = buttons.size(); i-- > 0;) gtk_dialog_add_button(GTK_DIALOG(dialog), buttons[i].c_str(), int(i));
    if (!buttons.empty()) gtk_dialog_set_default_response(GTK_DIALOG(dialog), 0);
    const int response = runAndDestroy(dialog);
    return response >= 0 && response < int(buttons.size()) ? response : -1;
}

bool GtkDialogs::presentError(const std::string& description) {
    runAndDestroy(messageDialog(parent_ ? parent_() : nullptr, GTK_MESSAGE_ERROR, GTK_BUTTONS_OK, description));
    return false;  // nothing here can resolve an error
}

std::string GtkDialogs::anyCasePattern(const std::string& extension) {
    std::string pattern = "*.";
    for (char c : extension) {
        const auto u = static_cast<unsigned char>(c);
        if (std::isalpha(u) && u < 0x80) {
            pattern += '[';
            pattern += char(std::tolower(u));
            pattern += char(std::toupper(u));
            pattern += ']';
        } else if (c == '*' || c == '?' || c == '[' || c == ']') {
            pattern += '[';  // a glob character stands for itself inside brackets
            pattern += c;
            pattern += ']';
        } else {
            pattern += c;
        }
    }
    return pattern;
}

namespace {

std::vector<std::string> chosenNames(GtkFileChooser* chooser) {
    std::vector<std::string> chosen;
    GSList* names = gtk_file_chooser_get_filenames(chooser);
    for (GSList* item = names; item; item = item->next) chosen.emplace_back(static_cast<const char*>(item->data));
    g_slist_free_full(names, g_free);
    return chosen;
}

// The folder panel, opened on the folder the file panel showed. Its own panel: the file panel selects its
// first row by itself, so a folder taken from there could be one the user never chose.
std::optional<std::vector<std::string>> chooseFolders(GtkWindow* parent, const std::string& action,
                                                      const GCharPtr& startFolder) {
    GtkWidget* dialog = gtk_file_chooser_dialog_new(action.c_str(), parent, GTK_FILE_CHOOSER_ACTION_SELECT_FOLDER,
                                                    localized("Cancel").c_str(), GTK_RESPONSE_CANCEL,
                                                    action.c_str(), GTK_RESPONSE_ACCEPT, nullptr);
    GtkFileChooser* chooser = GTK_FILE_CHOOSER(dialog);
    gtk_file_chooser_set_select_multiple(chooser, TRUE);
    gtk_file_chooser_set_local_only(chooser, TRUE);
    gtk_file_chooser_set_create_folders(chooser, FALSE);
    gtk_dialog_set_default_response(GTK_DIALOG(dialog), GTK_RESPONSE_ACCEPT);
    if (startFolder) gtk_file_chooser_set_current_folder(chooser, startFolder.get());
    std::optional<std::vector<std::string>> chosen;
    if (gtk_dialog_run(GTK_DIALOG(dialog)) == GTK_RESPONSE_ACCEPT) {
        chosen = chosenNames(chooser);
        if (chosen->empty()) {
            // Nothing selected: the folder shown is the one chosen.
            GCharPtr shown(gtk_file_chooser_get_current_folder(chooser));
            if (shown) chosen->emplace_back(shown.get());
        }
    }
    gtk_widget_destroy(dialog);
    return chosen;
}

}  // namespace

std::optional<std::vector<std::string>> GtkDialogs::chooseFiles(const OpenPanelRequest& request) {
    GtkWindow* parent = parent_ ? parent_() : nullptr;
    GtkWidget* dialog = gtk_file_chooser_dialog_new(request.message.c_str(), parent, GTK_FILE_CHOOSER_ACTION_OPEN,
                                                    localized("Cancel").c_str(), GTK_RESPONSE_CANCEL, nullptr);
    if (!request.folderAction.empty()) {
        gtk_dialog_add_button(GTK_DIALOG(dialog), request.folderAction.c_str(), kFolderResponse);
    }
    gtk_dialog_add_button(GTK_DIALOG(dialog), localized("Open").c_str(), GTK_RESPONSE_ACCEPT);
    GtkFileChooser* chooser = GTK_FILE_CHOOSER(dialog);
    gtk_file_chooser_set_select_multiple(chooser, TRUE);
    gtk_file_chooser_set_local_only(chooser, TRUE);
    gtk_dialog_set_default_response(GTK_DIALOG(dialog), GTK_RESPONSE_ACCEPT);
    if (!request.extensions.empty()) {
        GtkFileFilter* filter = gtk_file_filter_new();
        for (const auto& extension : request.extensions) {
            gtk_file_filter_add_pattern(filter, anyCasePattern(extension).c_str());
        }
        gtk_file_chooser_set_filter(chooser, filter);  // the chooser takes the floating reference
    }
    std::optional<std::vector<std::string>> chosen;
    const int response = gtk_dialog_run(GTK_DIALOG(dialog));
    if (response == GTK_RESPONSE_ACCEPT) chosen = chosenNames(chooser);
    GCharPtr shown(response == kFolderResponse ? gtk_file_chooser_get_current_folder(chooser) : nullptr);
    gtk_widget_destroy(dialog);
    if (response == kFolderResponse) return chooseFolders(parent, request.folderAction, shown);
    return chosen;
}

}  // namespace tunelark
