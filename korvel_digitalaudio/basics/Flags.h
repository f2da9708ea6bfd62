// The rules by which commands and settings tell yes from no.
#pragma once

#include <boost/algorithm/string/case_conv.hpp>
#include <string>

#include "platform/CmdMessage.h"
#include "platform/Text.h"

namespace flags {

// The usual rule: any number but 0 is true; `absent` is what an absent flag counts as.
inline bool Read(const ICmdMessage& message, const std::string& name, bool absent) {
    return message.HasParam(name) ? message.GetNumber(name) != 0 : absent;
}

// The same, but an empty flag counts as absent.
inline bool ReadFilled(const ICmdMessage& message, const std::string& name, bool absent) {
    return message.GetParam(name).empty() ? absent : message.GetNumber(name) != 0;
}

// True unless the text is exactly "0", so also when it is absent.
inline bool ReadUnlessZero(const ICmdMessage& message, const std::string& name) {
    return message.GetParam(name) != "0";
}

// Whether `text` is the word kv::TRUE_STRING or kv::FALSE_STRING, in any case.
inline bool IsWord(const std::string& text, const char* word) {
    return boost::algorithm::to_lower_copy(text) == boost::algorithm::to_lower_copy(std::string(word));
}

// Yes as a number or as a word; absent is no.
inline bool ReadNumberOrWord(const ICmdMessage& message, const std::string& name) {
    const std::string text = message.GetParam(name);
    return kv::ToLong(text) != 0 || IsWord(text, kv::TRUE_STRING);
}

} // namespace flags
