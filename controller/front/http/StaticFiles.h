#pragma once

#include <string>

#include "front/http/Message.h"

namespace korvel::controller {

// The file of the page that the path names, from the folder; 404 when there is none.
HttpReply ServeFile(const std::string& folder, const Target& target);

} // namespace korvel::controller
