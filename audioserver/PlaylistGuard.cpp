#include "audioserver/PlaylistGuard.h"

#include <gst/base/gstpushsrc.h>

#include <algorithm>
#include <iterator>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "audioserver/GstPointers.h"

namespace korvel::audioserver {
namespace {

// GStreamer asks the handlers of an address in the order of their ranks.
constexpr guint kBeforeAllOthers = GST_RANK_PRIMARY * 16;
constexpr const char* kAddressKey = "address";

thread_local unsigned g_trusted = 0;

bool IsWebProtocol(std::string_view protocol) {
    return protocol == "http" || protocol == "https";
}

// Every protocol that some element of this machine opens, but for those of the web. Kept for good.
const gchar* const* RefusedProtocols() {
    static const auto* protocols = [] {
        std::set<std::string> names;
        GList* factories = gst_registry_get_feature_list(gst_registry_get(), GST_TYPE_ELEMENT_FACTORY);
        for (const GList* one = factories; one != nullptr; one = one->next) {
            auto* factory = GST_ELEMENT_FACTORY(one->data);
            if (gst_element_factory_get_uri_type(factory) != GST_URI_SRC)
                continue;
            for (const gchar* const* name = gst_element_factory_get_uri_protocols(factory);
                 name != nullptr && *name != nullptr; ++name) {
                const GStringPtr lower(g_ascii_strdown(*name, -1));
                names.insert(lower.get());
            }
        }
        gst_plugin_feature_list_free(factories);
        std::erase_if(names, IsWebProtocol);
        auto* list = new std::vector<const gchar*>;
        std::transform(names.begin(), names.end(), std::back_inserter(*list),
                       [](const std::string& name) { return g_strdup(name.c_str()); });
        list->push_back(nullptr);
        return list;
    }();
    return protocols->data();
}

gboolean SetAddress(GstURIHandler* handler, const gchar* address, GError** error) {
    if (g_trusted > 0) {
        // The next handler in the order takes it.
        g_set_error_literal(error, GST_URI_ERROR, GST_URI_ERROR_UNSUPPORTED_PROTOCOL, "not refused");
        return FALSE;
    }
    g_object_set_data_full(G_OBJECT(handler), kAddressKey, g_strdup(address), g_free);
    return TRUE;
}

gchar* Address(GstURIHandler* handler) {
    return g_strdup(static_cast<const gchar*>(g_object_get_data(G_OBJECT(handler), kAddressKey)));
}

gboolean Refuse(GstBaseSrc* source) {
    gst_element_message_full(GST_ELEMENT(source), GST_MESSAGE_ERROR, GST_RESOURCE_ERROR,
                             GST_RESOURCE_ERROR_NOT_AUTHORIZED, g_strdup("names an address that is not http"),
                             nullptr, __FILE__, __func__, __LINE__);
    return FALSE;
}

void InitClass(gpointer type, gpointer) {
    static GstStaticPadTemplate output =
        GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS_ANY);
    gst_element_class_add_static_pad_template(GST_ELEMENT_CLASS(type), &output);
    gst_element_class_set_static_metadata(GST_ELEMENT_CLASS(type), "Refused source", "Source",
                                          "Stands for an address that is not opened", "korvel");
    GST_BASE_SRC_CLASS(type)->start = Refuse;
}

void InitHandler(gpointer interface, gpointer) {
    auto* handler = static_cast<GstURIHandlerInterface*>(interface);
    handler->get_type = [](GType) { return GST_URI_SRC; };
    handler->get_protocols = [](GType) { return RefusedProtocols(); };
    handler->get_uri = Address;
    handler->set_uri = SetAddress;
}

} // namespace

void GuardPlaylists() {
    static std::once_flag once;
    std::call_once(once, [] {
        RefusedProtocols(); // before this element is one of those that open them
        const GType type =
            g_type_register_static_simple(GST_TYPE_PUSH_SRC, "KorvelRefusedSource", sizeof(GstPushSrcClass),
                                          InitClass, sizeof(GstPushSrc), nullptr, GTypeFlags{});
        const GInterfaceInfo handler{InitHandler, nullptr, nullptr};
        g_type_add_interface_static(type, GST_TYPE_URI_HANDLER, &handler);
        gst_element_register(nullptr, "korvelrefusedsrc", kBeforeAllOthers, type);
    });
}

TrustedAddress::TrustedAddress() {
    ++g_trusted;
}

TrustedAddress::~TrustedAddress() {
    --g_trusted;
}

} // namespace korvel::audioserver
