#include "platform/gdbus/GVariantValues.h"

#include "platform/glib/GObjectHandles.h"

#include <glib.h>

#include <limits>
#include <type_traits>

namespace tunelark {

namespace {

GVariant* stringList(const BusStrings& list) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_STRING_ARRAY);
    for (const auto& text : list) g_variant_builder_add_value(&builder, g_variant_new_string(validUtf8(text).c_str()));
    return g_variant_builder_end(&builder);
}

GVariant* objectPath(const BusObjectPath& path) {
    return g_variant_new_object_path(g_variant_is_object_path(path.path.c_str()) ? path.path.c_str() : "/");
}

template <typename Variant>
GVariant* scalarToGVariant(const Variant& value) {
    return std::visit(
        [](const auto& v) -> GVariant* {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, bool>) {
                return g_variant_new_boolean(v);
            } else if constexpr (std::is_same_v<T, std::int64_t>) {
                return g_variant_new_int64(v);
            } else if constexpr (std::is_same_v<T, double>) {
                return g_variant_new_double(v);
            } else if constexpr (std::is_same_v<T, std::string>) {
                return g_variant_new_string(validUtf8(v).c_str());
            } else if constexpr (std::is_same_v<T, BusObjectPath>) {
                return objectPath(v);
            } else if constexpr (std::is_same_v<T, BusStrings>) {
                return stringList(v);
            } else if constexpr (std::is_same_v<T, BusInt32>) {
                return g_variant_new_int32(v.value);
            } else {
                GVariantBuilder builder;
                g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
                for (const auto& [key, entry] : v) {
                    g_variant_builder_add(&builder, "{sv}", validUtf8(key).c_str(), scalarToGVariant(entry));
                }
                return g_variant_builder_end(&builder);
            }
        },
        value);
}

std::optional<BusScalar> scalarFromGVariant(GVariant* value) {
    auto full = fromGVariant(value);
    if (!full || std::holds_alternative<BusDict>(*full)) return std::nullopt;
    return std::visit(
        [](auto&& v) -> std::optional<BusScalar> {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, BusDict>) {
                return std::nullopt;
            } else {
                return BusScalar(std::move(v));
            }
        },
        std::move(*full));
}

std::optional<BusValue> dictFromGVariant(GVariant* value) {
    BusDict dict;
    GVariantIter iter;
    g_variant_iter_init(&iter, value);
    const gchar* key = nullptr;
    GVariant* boxed = nullptr;
    while (g_variant_iter_next(&iter, "{&sv}", &key, &boxed)) {
        auto entry = scalarFromGVariant(boxed);
        g_variant_unref(boxed);
        if (!entry) return std::nullopt;
        dict[key] = std::move(*entry);
    }
    return dict;
}

}  // namespace

std::string validUtf8(const std::string& text) {
    if (g_utf8_validate_len(text.data(), text.size(), nullptr)) return text;
    // g_utf8_make_valid keeps NUL bytes, which a D-Bus string cannot hold.
    std::string noNul;
    noNul.reserve(text.size());
    for (char c : text) {
        if (c == '\0') {
            noNul += "\xEF\xBF\xBD";
        } else {
            noNul += c;
        }
    }
    GCharPtr valid(g_utf8_make_valid(noNul.data(), static_cast<gssize>(noNul.size())));
    return valid.get();
}

GVariant* toGVariant(const BusValue& value) { return scalarToGVariant(value); }

std::optional<BusValue> fromGVariant(GVariant* value) {
    if (value == nullptr) return std::nullopt;
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_VARDICT)) return dictFromGVariant(value);
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING_ARRAY)) {
        gsize length = 0;
        const gchar** strings = g_variant_get_strv(value, &length);
        BusStrings list(strings, strings + length);
        g_free(strings);
        return list;
    }
    switch (g_variant_classify(value)) {
    case G_VARIANT_CLASS_BOOLEAN:
        return g_variant_get_boolean(value) != FALSE;
    case G_VARIANT_CLASS_BYTE:
        return std::int64_t{g_variant_get_byte(value)};
    case G_VARIANT_CLASS_INT16:
        return std::int64_t{g_variant_get_int16(value)};
    case G_VARIANT_CLASS_UINT16:
        return std::int64_t{g_variant_get_uint16(value)};
    case G_VARIANT_CLASS_INT32:
        return std::int64_t{g_variant_get_int32(value)};
    case G_VARIANT_CLASS_UINT32:
        return std::int64_t{g_variant_get_uint32(value)};
    case G_VARIANT_CLASS_INT64:
        return std::int64_t{g_variant_get_int64(value)};
    case G_VARIANT_CLASS_UINT64: {
        const guint64 number = g_variant_get_uint64(value);
        if (number > static_cast<guint64>(std::numeric_limits<std::int64_t>::max())) return std::nullopt;
        return static_cast<std::int64_t>(number);
    }
    case G_VARIANT_CLASS_DOUBLE:
        return g_variant_get_double(value);
    case G_VARIANT_CLASS_STRING:
        return std::string(g_variant_get_string(value, nullptr));
    case G_VARIANT_CLASS_OBJECT_PATH:
        return BusObjectPath{g_variant_get_string(value, nullptr)};
    default:
        return std::nullopt;
    }
}

}  // namespace tunelark
