// The open panel's folder action in real GTK file choosers, answered by a scripted user.
#include "platform/glib/GObjectHandles.h"
#include "platform/gtk/GtkDialogs.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <filesystem>
#include <functional>

namespace tunelark {
namespace {

using Texts = std::vector<std::string>;

// One panel as the user meets it: prepare() runs when it is up, then it is polled until ready() holds,
// and the button labelled `button` is pressed.
struct Step {
    std::function<void(GtkFileChooser*)> prepare;
    std::function<bool(GtkFileChooser*)> ready;
    std::string button;
};

struct ScriptedUser {
    explicit ScriptedUser(std::vector<Step> steps) : steps(std::move(steps)) {}

    std::vector<Step> steps;
    std::size_t at = 0;
    GtkWidget* current = nullptr;
    int polls = 0;
    std::string seen;  // per panel: its action and its buttons

    static GtkWidget* visibleChooser() {
        GtkWidget* found = nullptr;
        GList* windows = gtk_window_list_toplevels();
        for (GList* w = windows; w; w = w->next)
            if (GTK_IS_FILE_CHOOSER_DIALOG(w->data) && gtk_widget_get_visible(GTK_WIDGET(w->data))) found = GTK_WIDGET(w->data);
        g_list_free(windows);
        return found;
    }
    static gboolean tick(gpointer data) {
        auto* self = static_cast<ScriptedUser*>(data);
        GtkWidget* dialog = visibleChooser();
        if (!dialog || self->at >= self->steps.size()) return G_SOURCE_CONTINUE;
        auto* chooser = GTK_FILE_CHOOSER(dialog);
        const Step& step = self->steps[self->at];
        if (dialog != self->current) {
            self->current = dialog;
            self->polls = 0;
            self->seen += gtk_file_chooser_get_action(chooser) == GTK_FILE_CHOOSER_ACTION_SELECT_FOLDER ? "folders:" : "files:";
            for (int response : {int(GTK_RESPONSE_CANCEL), 1, int(GTK_RESPONSE_ACCEPT)})
                if (GtkWidget* button = gtk_dialog_get_widget_for_response(GTK_DIALOG(dialog), response))
                    self->seen += std::string("[") + gtk_button_get_label(GTK_BUTTON(button)) + "]";
            self->seen += " ";
            if (step.prepare) step.prepare(chooser);
            return G_SOURCE_CONTINUE;
        }
        if (step.ready && !step.ready(chooser) && ++self->polls < 100) return G_SOURCE_CONTINUE;
        for (int response : {int(GTK_RESPONSE_CANCEL), 1, int(GTK_RESPONSE_ACCEPT)}) {
            GtkWidget* button = gtk_dialog_get_widget_for_response(GTK_DIALOG(dialog), response);
            if (button && gtk_button_get_label(GTK_BUTTON(button)) == step.button) {
                ++self->at;
                gtk_dialog_response(GTK_DIALOG(dialog), response);
                return G_SOURCE_CONTINUE;
            }
        }
        gtk_dialog_response(GTK_DIALOG(dialog), GTK_RESPONSE_CANCEL);  // no such button: what was seen tells
        return G_SOURCE_CONTINUE;
    }
};

bool selected(GtkFileChooser* chooser) {
    GSList* names = gtk_file_chooser_get_filenames(chooser);
    const bool any = names != nullptr;
    g_slist_free_full(names, g_free);
    return any;
}

class FolderPanelTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!gtk_init_check(nullptr, nullptr)) GTEST_SKIP() << "no display";
        std::filesystem::create_directories(dir.file("Music/Album"));
        std::filesystem::create_directories(dir.file("Music/Other"));
        test::writeAll(dir.file("Music/song.mp3"), "");
    }
    std::optional<Texts> choose(ScriptedUser& user, bool withFolders = true) {
        g_timeout_add(50, &ScriptedUser::tick, &user);
        auto chosen = dialogs.chooseFiles({"Choose", {"lrc", "mp3"}, withFolders ? "Add Folder" : ""});
        g_source_remove_by_user_data(&user);
        return chosen;
    }
    bool shows(GtkFileChooser* chooser, const std::string& folder) const {
        GCharPtr shown(gtk_file_chooser_get_current_folder(chooser));
        return shown && dir.file(folder) == shown.get();
    }
    // The file panel, turned to Music, left by its folder action.
    Step showMusic() {
        return {[this](GtkFileChooser* c) { gtk_file_chooser_set_current_folder(c, dir.file("Music").c_str()); },
                [this](GtkFileChooser* c) { return shows(c, "Music") && selected(c); }, "Add Folder"};
    }

    test::TempDir dir;
    GtkDialogs dialogs{[] { return static_cast<GtkWindow*>(nullptr); }};
};

TEST_F(FolderPanelTest, TheFolderActionLeadsToAFolderPanelOnTheFolderShownWhichTakesTheSelectedFolder) {
    ScriptedUser user({showMusic(),
                       {[this](GtkFileChooser* c) { gtk_file_chooser_select_filename(c, dir.file("Music/Other").c_str()); },
                        selected, "Add Folder"}});
    EXPECT_EQ(choose(user), Texts{dir.file("Music/Other")}) << user.seen;
    EXPECT_EQ(user.seen, "files:[Cancel][Add Folder][Open] folders:[Cancel][Add Folder] ");
}

TEST_F(FolderPanelTest, WithNoFolderSelectedTheFolderPanelTakesTheFolderItShows) {
    ScriptedUser user({showMusic(), {nullptr, [this](GtkFileChooser* c) { return shows(c, "Music"); }, "Add Folder"}});
    EXPECT_EQ(choose(user), Texts{dir.file("Music")}) << user.seen;
}

TEST_F(FolderPanelTest, OpenStillTakesFilesAndAPanelWithoutTheActionHasNoFolderButton) {
    ScriptedUser user({{[this](GtkFileChooser* c) { gtk_file_chooser_select_filename(c, dir.file("Music/song.mp3").c_str()); },
                        selected, "Open"}});
    EXPECT_EQ(choose(user, false), Texts{dir.file("Music/song.mp3")}) << user.seen;
    EXPECT_EQ(user.seen, "files:[Cancel][Open] ");
}

}  // namespace
}  // namespace tunelark
