#include "actions/Parameters.h"

#include <string>

#include "base/Refused.h"
#include "common/Text.h"

namespace korvel::controller {
namespace {

void Require(bool good, const std::string& name, const std::string& what) {
    if (!good)
        throw Refused(Refused::Why::Invalid, name + " " + what);
}

void RequireLength(const std::string& name, std::string_view text, std::size_t most) {
    Require(text.size() <= most, name, "is longer than " + std::to_string(most) + " bytes");
}

void CheckReference(const std::string& name, std::string_view text) {
    RequireLength(name, text, common::kMaxReferenceBytes);
    Require(common::IsReference(text), name,
            "holds a quote or a control character, which no reference to media does");
}

// The text around its elements may be broken into lines; what is no list names nothing.
void CheckList(const std::string& name, const std::string& text) {
    RequireLength(name, text, kMaxListBytes);
    const auto document = KVXML::CreateXmlDocument(text);
    if (!document)
        return;
    const auto root = document->GetRoot();
    for (std::size_t i = 0; i < root->GetChildCount(); ++i)
        CheckReference("an ID in " + name, root->GetChild(i).GetAttribute("ID"));
}

} // namespace

void CheckParameters(const ICmdMessage& command) {
    const bool isStation = command.GetName() == "ADD_IR_STREAM";
    for (std::size_t i = 0; i < command.GetParamCount(); ++i) {
        const CmdParam& param = command.GetParamAt(i);
        if (param.name == "MEDIA_ID" || (param.name == "MEDIA" && isStation)) {
            CheckReference(param.name, param.value);
        } else if (param.name == "MEDIA") {
            CheckList(param.name, param.value);
        } else {
            RequireLength(param.name, param.value, kMaxTextBytes);
            Require(!common::HasControl(param.value), param.name, "holds a control character");
        }
    }
}

} // namespace korvel::controller
