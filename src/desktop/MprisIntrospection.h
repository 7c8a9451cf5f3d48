#pragma once
#include <string>

namespace tunelark {

// The bus name, object path and interfaces under which desktops find a media player.
inline constexpr const char* kMprisBusName = "org.mpris.MediaPlayer2.tunelark";
inline constexpr const char* kMprisObjectPath = "/org/mpris/MediaPlayer2";
inline constexpr const char* kMprisRootInterface = "org.mpris.MediaPlayer2";
inline constexpr const char* kMprisPlayerInterface = "org.mpris.MediaPlayer2.Player";

// The introspection data of both interfaces.
const std::string& mprisIntrospectionXml();

}  // namespace tunelark
