#include "platform/glib/AppInfoFile.h"

#include "platform/glib/GuardedCall.h"

#include <glib.h>

#include <memory>

namespace tunelark {

std::vector<std::string> readQueriesSchemes(const std::string& appInfoPath) {
    std::unique_ptr<GKeyFile, decltype(&g_key_file_free)> file(g_key_file_new(), &g_key_file_free);
    GError* error = nullptr;
    gsize length = 0;
    gchar** list = nullptr;
    if (g_key_file_load_from_file(file.get(), appInfoPath.c_str(), G_KEY_FILE_NONE, &error)) {
        list = g_key_file_get_string_list(file.get(), "Application", "LSApplicationQueriesSchemes", &length, &error);
    }
    if (error) {
        g_log(kLogDomain, G_LOG_LEVEL_DEBUG, "no URL schemes from %s: %s", appInfoPath.c_str(), error->message);
        g_error_free(error);
    }
    std::vector<std::string> schemes;
    for (gsize i = 0; list && i < length; ++i) {
        if (list[i][0] != '\0') schemes.emplace_back(list[i]);
    }
    g_strfreev(list);
    return schemes;
}

}  // namespace tunelark
