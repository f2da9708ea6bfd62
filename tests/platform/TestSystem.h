#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/InstanceManager.h"
#include "platform/System.h"

// A machine whose values are set by hand; notes what it is told. Uninstalls itself.
class TestSystem final : public kv::ISystem {
public:
    struct Assert {
        std::string path;
        int line;
        std::string stack;
    };

    TestSystem() { kv::InstallSystem(this); }
    TestSystem(const TestSystem&) = delete;
    TestSystem& operator=(const TestSystem&) = delete;
    ~TestSystem() { kv::UninstallSystem(this); }

    std::uint32_t Time() override { return time; }
    void MonotonicTime(timespec& now) override { now = monotonic; }
    std::int32_t Random() override { return random; }
    void SeedRandom(std::uint32_t value) override { seed = value; }
    std::uint32_t SystemType() override { return type; }
    bool IsLocalIPv4(const std::string& address) override { return address == "127.0.0.1"; }
    void Log(int level, const std::string& text) override {
        if (throwOnLog)
            throw 1; // not even a std::exception
        log.push_back(std::to_string(level) + " " + text);
    }
    void RecordAssert(const std::string& path, int line, const std::string& stack) override {
        asserts.push_back({path, line, stack});
    }

    std::uint32_t time = 0;
    timespec monotonic{};
    std::int32_t random = 0;
    std::uint32_t seed = 0;
    std::uint32_t type = 0;
    bool throwOnLog = false;
    std::vector<std::string> log;
    std::vector<Assert> asserts;
};

// Services by identifier, as a core keeps them.
class TestInstances final : public IInstanceManager {
public:
    bool GetInstance(const std::string& id, void** instance) override {
        const auto found = m_instances.find(id);
        *instance = found == m_instances.end() ? nullptr : found->second;
        return found != m_instances.end();
    }
    void RegisterInstance(const std::string& id, void* instance) override { m_instances[id] = instance; }
    void RevokeInstance(const std::string& id) override { m_instances.erase(id); }

private:
    std::map<std::string, void*> m_instances;
};
