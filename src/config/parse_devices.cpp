#include <charconv>
#include <string>

#include "config/config_parser.h"
#include "config/option_tables.h"
#include "config/section_walk.h"

namespace zant::kor {

namespace {

constexpr uint32_t PROFILING_LEVEL_LINTING = 7001;

struct DeviceWalk {
    static constexpr KeySection section = KeySection::devices;
    static constexpr KeyElement element = KeyElement::devices;

    SectionRecords<KORDeviceConfig> records;
    KORConfigParser& parser;

    KORDeviceConfig& inForce() const { return records.inForce(); }
    bool handle(const FlatKey& key);
};

// The keys below "cores", which all write into the device's one core record.
struct CoreWalk {
    DeviceWalk& device;

    KORCoreConfig& inForce() const { return device.inForce().core; }
};

bool readDeviceId(DeviceWalk& walk, const FlatKey& key, const char*) {
    const uint32_t value = getUint32(key);
    KORDeviceConfig& device = walk.inForce();
    device.deviceId = value;
    device.deviceIdSet = true;
    ZANT_LOG_INFO("Key: device_id, Value: %d", static_cast<int>(value));
    return true;
}

// The number behind the 'v', up to its first non-digit; 0 for no number, or one too large for the field.
uint32_t architectureNumber(const std::string& text) {
    uint32_t number = 0;
    if (std::from_chars(text.data() + 1, text.data() + text.size(), number).ec != std::errc()) return 0;
    return number;
}

bool readDspArch(DeviceWalk& walk, const FlatKey& key, const char*) {
    const std::string text = getString(key);
    KORDeviceConfig& device = walk.inForce();
    if (!text.empty()) {
        const uint32_t number = text.front() == 'v' ? architectureNumber(text) : 0;
        if (number != 0) {
            device.dspArch = number;
        } else {
            ZANT_LOG_ERROR("Error invalid dsp_arch value: %s", text.c_str());
        }
    }
    ZANT_LOG_INFO("Key: dsp_arch, Value: %d", static_cast<int>(device.dspArch));
    return true;
}

bool readPdSession(DeviceWalk& walk, const FlatKey& key, const char*) {
    const std::string text = getString(key);
    KORDeviceConfig& device = walk.inForce();
    if (text != "signed" && text != "unsigned") {
        ZANT_LOG_ERROR("Invalid pd_session option: %s provided, Setting default pd_session = unsigned", text.c_str());
        return true;
    }
    if (text == "signed") device.pdSessionSigned = true;
    ZANT_LOG_INFO("Key: pd_session, Value: %d", static_cast<int>(device.pdSessionSigned));
    return true;
}

bool readProfilingLevel(DeviceWalk& walk, const FlatKey& key, const char*) {
    const std::string text = getString(key);
    if (text != "linting") {
        ZANT_LOG_INFO("Profiling level %s is not supported", text.c_str());
        return true;
    }
    walk.inForce().profilingLevel = PROFILING_LEVEL_LINTING;
    ZANT_LOG_INFO("Key: profile_level, Value: %d", static_cast<int>(PROFILING_LEVEL_LINTING));
    return true;
}

bool readCoreId(DeviceWalk& walk, const FlatKey& key, const char*) {
    const uint32_t value = getUint32(key);
    walk.inForce().coreIds.push_back(value);
    ZANT_LOG_INFO("Key: core_id, Value: %d", static_cast<int>(value));
    return true;
}

bool readDeviceType(DeviceWalk& walk, const FlatKey& key, const char*) {
    const uint32_t value = getUint32(key);
    if (value > 1) {
        ZANT_LOG_ERROR("Invalid device_type value: %d. Must be 0 (on-chip) or 1 (off-chip)", static_cast<int>(value));
        return false;
    }
    walk.inForce().deviceType = value;
    ZANT_LOG_INFO("Key: device_type, Value: %d", static_cast<int>(value));
    return true;
}

bool readPerfProfile(CoreWalk& walk, const FlatKey& key, const char*) {
    uint32_t& profile = walk.inForce().perfProfile;
    parsePerfProfile(key, profile);
    ZANT_LOG_INFO("Key: perf_profile, Value: %d", static_cast<int>(profile));
    return true;
}

// An array index behind "custom" tells the array form from the object form.
bool readCustom(CoreWalk& walk, const FlatKey& key, const char*) {
    KORCoreConfig& core = walk.inForce();
    if (key.after(KeyElement::custom).isDigits()) return walk.device.parser.parseCustomPerfItem(key, core);
    return parseLegacyCustomPerf(key, core);
}

// A name that the tables lack costs its line and leaves the invalid value in the field, no more.
bool readDruControl(CoreWalk& walk, const FlatKey& key, const char*) {
    (void)parseLegacyCustomPerf(key, walk.inForce());
    return true;
}

constexpr auto CORE_ROWS = std::to_array<ChainRow<CoreWalk>>({
    row<CoreWalk, Uint32To<&KORCoreConfig::rpcControlLatency>>(word("rpc_control_latency"),
                                                               "Key: rpc_control_latency, Value: %d"),
    row<CoreWalk, Uint32To<&KORCoreConfig::rpcPollingTime>>(word("rpc_polling_time"),
                                                            "Key: rpc_polling_time, Value: %d"),
    row<CoreWalk, Uint32To<&KORCoreConfig::druTimeoutUs>>(word("dru_timeout_us"), "Key: dru_timeout_us, Value: %d"),
    row<CoreWalk>(word("perf_profile"), readPerfProfile),
    row<CoreWalk>(word("custom"), readCustom),
    row<CoreWalk>(word("druControl"), readDruControl),
    row<CoreWalk, Uint32To<&KORCoreConfig::adaptivePollingTime>>(word("adaptive_polling_time"),
                                                                 "Key: adaptive_polling_time, Value: %d"),
    row<CoreWalk, BoolWordTo<&KORCoreConfig::ddrPerfMode>>(word("ddr_perf_mode"), "Key: ddr_perf_mode, Value: %s"),
});

bool readCores(DeviceWalk& walk, const FlatKey& key, const char*) {
    CoreWalk core{walk};
    const ChainRow<CoreWalk>* hit = firstHit(CORE_ROWS, key);
    if (hit != nullptr) return hit->apply(core, key, hit->line);
    ZANT_LOG_ERROR("Unknown Key: %s provided in KOR extensions config", key.text().c_str());
    return true;
}

constexpr auto DEVICE_ROWS = std::to_array<ChainRow<DeviceWalk>>({
    row<DeviceWalk>(word("device_id"), readDeviceId),
    row<DeviceWalk, Uint32To<&KORDeviceConfig::socModel>>(word("soc_id"), "Key: soc_id, Value: %d"),
    row<DeviceWalk, Uint32To<&KORDeviceConfig::socModel>>(word("soc_model"), "Key: soc_model, Value: %d"),
    row<DeviceWalk>(word("dsp_arch"), readDspArch),
    row<DeviceWalk>(word("pd_session"), readPdSession),
    row<DeviceWalk, BoolTo<&KORDeviceConfig::useDynamicPartitioning>>(word("use_dynamic_partitioning"),
                                                                      "Key: use_dynamic_partitioning, Value: %d"),
    row<DeviceWalk, BoolTo<&KORDeviceConfig::useClientContext>>(word("use_client_context"),
                                                                "Key: use_client_context, Value: %d"),
    row<DeviceWalk>(word("profiling_level"), readProfilingLevel),
    row<DeviceWalk, BoolWordTo<&KORDeviceConfig::asyncVoting>>(word("async_voting"), "Key: async_voting, Value: %s"),
    row<DeviceWalk>(word("core_id"), readCoreId),
    row<DeviceWalk, Uint32To<&KORDeviceConfig::coreType>>(word("core_type"), "Key: core_type, Value: %d"),
    row<DeviceWalk>(word("device_type"), readDeviceType),
    row<DeviceWalk, BoolTo<&KORDeviceConfig::enableAsyncExecute>>(word("enable_async_execute"),
                                                                  "Key: enable_async_execute, Value: %d"),
    row<DeviceWalk, BoolTo<&KORDeviceConfig::enableKorExtension>>(word("enable_kor_extension"),
                                                                  "Key: enable_kor_extension, Value: %d"),
    row<DeviceWalk, BoolTo<&KORDeviceConfig::consolidateKorExtension>>(word("consolidate_kor_extension"),
                                                                       "Key: consolidate_kor_extension, Value: %d"),
    row<DeviceWalk>(word("cores"), readCores),
});

// A key that no row knows is ignored without a line. One without a record ends the load, whatever it says.
bool DeviceWalk::handle(const FlatKey& key) {
    (void)inForce();
    const ChainRow<DeviceWalk>* hit = firstHit(DEVICE_ROWS, key);
    return hit == nullptr || hit->apply(*this, key, hit->line);
}

}  // namespace

bool parseDevices(const FlatKeyList& keys, std::vector<KORDeviceConfig>& devices, KORConfigParser& parser) {
    DeviceWalk walk{SectionRecords<KORDeviceConfig>(devices), parser};
    return walkSection(keys, walk);
}

}  // namespace zant::kor
