#include "platform/CmdMessage.h"

#include <vector>

#include "platform/Text.h"
#include "platform/XmlHelper.h"

namespace {

class CmdMessage final : public kv::RefCounted<ICmdMessage> {
public:
    explicit CmdMessage(std::string name) : m_name(std::move(name)) {}

    const std::string& GetName() const override { return m_name; }
    bool HasParam(const std::string& name) const override { return Find(name) != nullptr; }
    std::string GetParam(const std::string& name) const override {
        const CmdParam* param = Find(name);
        return param ? param->value : "";
    }
    std::uint32_t GetNumber(const std::string& name) const override { return kv::ToULong(GetParam(name)); }
    void AddParam(const std::string& name, const std::string& type, const std::string& value) override {
        for (CmdParam& param : m_params) {
            if (param.name == name) {
                param = {name, type, value};
                return;
            }
        }
        m_params.push_back({name, type, value});
    }
    std::size_t GetParamCount() const override { return m_params.size(); }
    const CmdParam& GetParamAt(std::size_t index) const override { return m_params.at(index); }

private:
    const CmdParam* Find(const std::string& name) const {
        for (const CmdParam& param : m_params) {
            if (param.name == name)
                return &param;
        }
        return nullptr;
    }

    std::string m_name;
    std::vector<CmdParam> m_params;
};

class OutboundBindMessage final : public kv::RefCounted<IOutboundBindMessage> {
public:
    OutboundBindMessage(std::uint32_t kind, std::string name, std::string data)
        : m_kind(kind), m_name(std::move(name)), m_data(std::move(data)) {}
    std::uint32_t GetKind() const override { return m_kind; }
    const std::string& GetName() const override { return m_name; }
    const std::string& GetData() const override { return m_data; }

private:
    std::uint32_t m_kind;
    std::string m_name;
    std::string m_data;
};

} // namespace

namespace kv {

auto_com<ICmdMessage> CreateCmdMessage(const std::string& name) {
    return auto_com<ICmdMessage>::adopt(new CmdMessage(name));
}

auto_com<KVXML::INode> CmdMessageToXml(const ICmdMessage& message) {
    auto element = KVXML::CreateXmlNode("command");
    element->SetAttribute("name", message.GetName());
    for (std::size_t i = 0; i < message.GetParamCount(); ++i) {
        const CmdParam& param = message.GetParamAt(i);
        auto child = XmlHelper::AddChild(*element, "param", param.value);
        child->SetAttribute("name", param.name);
        child->SetAttribute("type", param.type);
    }
    return element;
}

auto_com<ICmdMessage> CmdMessageFromXml(const KVXML::INode& element) {
    const std::string name(element.GetAttribute("name"));
    if (element.GetName() != "command" || name.empty() || element.GetChildCount() > kMaxCommandParams)
        return nullptr;
    auto message = CreateCmdMessage(name);
    for (std::size_t i = 0; i < element.GetChildCount(); ++i) {
        const KVXML::INode& child = element.GetChild(i);
        if (child.GetName() == "param")
            message->AddParam(std::string(child.GetAttribute("name")),
                              std::string(child.GetAttribute("type")), std::string(child.GetText()));
    }
    return message;
}

auto_com<IOutboundBindMessage> CreateOutboundBindMessage(std::uint32_t kind, const std::string& name,
                                                         const std::string& data) {
    return auto_com<IOutboundBindMessage>::adopt(new OutboundBindMessage(kind, name, data));
}

} // namespace kv
