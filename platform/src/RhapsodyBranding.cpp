#include <boost/algorithm/string/case_conv.hpp>

#include "platform/rhapsody/RhapsodyClient.h"

namespace KVRhapsodyClient {

RhapsodyBranding GetRhapsodyBranding(const std::string& text) {
    return boost::algorithm::to_lower_copy(text) == "partner" ? RhapsodyBranding::PartnerBrand
                                                              : RhapsodyBranding::Standard;
}

} // namespace KVRhapsodyClient
