#include "platform/Utilities.h"

namespace {

class StandardStringX final : public kv::RefCounted<IStringX> {
public:
    std::string OneLine(const std::string& text) const override {
        std::string line = text;
        for (char& c : line) {
            if (static_cast<unsigned char>(c) < 32 || c == 127)
                c = ' ';
        }
        return line;
    }
};

class StandardKVMessage final : public kv::RefCounted<IKVMessage> {
public:
    std::string Describe(const ICmdMessage& message) const override {
        std::string out = message.GetName();
        for (std::size_t i = 0; i < message.GetParamCount(); ++i) {
            const CmdParam& param = message.GetParamAt(i);
            out.append(" ").append(param.name).append("=").append(param.value);
        }
        return out;
    }
};

template <class Interface>
kv::auto_com<Interface> Share(IInstanceManager& instances) {
    return kv::auto_com<Interface>::retain(kv::GetService<Interface>(instances));
}

} // namespace

kv::auto_com<IStringX> CreateStandardStringX() {
    return kv::auto_com<IStringX>::adopt(new StandardStringX);
}
kv::auto_com<IKVMessage> CreateStandardKVMessage() {
    return kv::auto_com<IKVMessage>::adopt(new StandardKVMessage);
}

kv::auto_com<IStringX> StringX::Create(IInstanceManager& instances) {
    return Share<IStringX>(instances);
}
kv::auto_com<IKVMessage> KVMessage::Create(IInstanceManager& instances) {
    return Share<IKVMessage>(instances);
}
