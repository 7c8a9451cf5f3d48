#pragma once
#include "platform/glib/GObjectHandles.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

typedef struct _GtkApplication GtkApplication;
typedef struct _GMenuModel GMenuModel;
typedef struct _GMenu GMenu;

namespace tunelark {

struct AppMenuItem {
    std::string action;       // application action name, without the "app." prefix
    std::string label;        // with a mnemonic underscore if wanted
    std::string accelerator;  // GTK accelerator text such as "<Primary>s"; empty for none
    std::function<void()> activate;
};

// The application's actions and the menu that lists them, items grouped in sections in the given
// order. The actions are removed again when the menu goes.
class GtkAppMenu {
public:
    GtkAppMenu(GtkApplication* application, const std::vector<std::vector<AppMenuItem>>& sections);
    ~GtkAppMenu();
    GtkAppMenu(const GtkAppMenu&) = delete;
    GtkAppMenu& operator=(const GtkAppMenu&) = delete;

    GMenuModel* model() const;

private:
    struct Action;
    GtkApplication* application_;
    GObjectPtr<GMenu> menu_;
    std::vector<std::unique_ptr<Action>> actions_;
};

}  // namespace tunelark
