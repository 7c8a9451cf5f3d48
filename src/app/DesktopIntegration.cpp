#include "app/DesktopIntegration.h"

#include "desktop/MprisIntrospection.h"

#include <glib.h>

namespace tunelark {

DesktopIntegration::DesktopIntegration(Deps deps)
    : players_(deps.players),
      engine_(deps.engine),
      files_(deps.queue, deps.page, deps.addFiles, deps.operations),
      mediaPlayer_(MediaPlayer2::Deps{deps.queue, deps.engine, deps.page, deps.operations, tagReader_,
                                      std::string(g_get_user_cache_dir()) + "/tunelark/covers",
                                      [this](std::vector<std::string> paths) { files_.open(std::move(paths)); },
                                      std::move(deps.raise), std::move(deps.quit)}),
      bus_(GDBusObjectServer::Export{kMprisBusName, kMprisObjectPath, mprisIntrospectionXml()}, mediaPlayer_),
      drop_(deps.dropArea, [this](std::vector<std::string> paths) { files_.add(std::move(paths)); }) {
    players_.setListener({[this] { mediaPlayer_.positionSet(); }, [this] { mediaPlayer_.transportChanged(); }});
    engine_.seams().afterTick = [this] { mediaPlayer_.clockTicked(); };
    if (bus_.registered()) mediaPlayer_.setSignals(&bus_);
}

DesktopIntegration::~DesktopIntegration() {
    engine_.seams().afterTick = nullptr;
    players_.setListener({});
    mediaPlayer_.setSignals(nullptr);
}

}  // namespace tunelark
