#include "platform/gtk/GtkAppMenu.h"

#include "platform/glib/GuardedCall.h"

#include <gtk/gtk.h>

namespace tunelark {

struct GtkAppMenu::Action {
    std::string name;
    std::function<void()> activate;
    GObjectPtr<GSimpleAction> action;
    SignalConnection connection;

    static void activated(GSimpleAction*, GVariant*, gpointer data) noexcept {
        auto* self = static_cast<Action*>(data);
        guardedCall(self->name.c_str(), [&] {
            if (self->activate) self->activate();
        });
    }
};

GtkAppMenu::GtkAppMenu(GtkApplication* application, const std::vector<std::vector<AppMenuItem>>& sections)
    : application_(application), menu_(GObjectPtr<GMenu>::adopt(g_menu_new())) {
    for (const auto& items : sections) {
        GObjectPtr<GMenu> section = GObjectPtr<GMenu>::adopt(g_menu_new());
        for (const auto& item : items) {
            auto action = std::make_unique<Action>();
            action->name = item.action;
            action->activate = item.activate;
            action->action = GObjectPtr<GSimpleAction>::adopt(g_simple_action_new(item.action.c_str(), nullptr));
            action->connection = SignalConnection(action->action.get(), "activate", G_CALLBACK(Action::activated),
                                                  action.get());
            g_action_map_add_action(G_ACTION_MAP(application_), G_ACTION(action->action.get()));
            const std::string detailed = "app." + item.action;
            g_menu_append(section.get(), item.label.c_str(), detailed.c_str());
            if (!item.accelerator.empty()) {
                const char* accels[] = {item.accelerator.c_str(), nullptr};
                gtk_application_set_accels_for_action(application_, detailed.c_str(), accels);
            }
            actions_.push_back(std::move(action));
        }
        g_menu_append_section(menu_.get(), nullptr, G_MENU_MODEL(section.get()));
    }
}

GtkAppMenu::~GtkAppMenu() {
    for (const auto& action : actions_) {
        action->connection.disconnect();
        g_action_map_remove_action(G_ACTION_MAP(application_), action->name.c_str());
    }
}

GMenuModel* GtkAppMenu::model() const { return G_MENU_MODEL(menu_.get()); }

}  // namespace tunelark
