// The exported functions of zone controllers.
#include "app/exported.h"
#include "common/format.h"
#include "common/sdk_version.h"
#include "devices/zone_string.h"

#include <algorithm>

namespace {

constexpr int kHostChannels = 8;
constexpr int kLeaveUnchanged = -1;
constexpr int kBadLevel = -2;

bool IsLevel(int level) {
    return level >= 0 && level <= kQuietestLevel;
}

/// The host is told loudness, devices count attenuation.
uint8_t Attenuation(int level) {
    return static_cast<uint8_t>(kQuietestLevel - level);
}

int SetVolumesV2(CK740ControlApp& app, int zcuID, const int* levels) {
    for (int channel = 0; channel < kVolumeChannelsV2; ++channel) {
        if (!IsLevel(levels[channel])) { continue; }
        const tagADJUST_DEVICE_VOLUME_REQ_V2 request{static_cast<uint32_t>(zcuID), static_cast<uint8_t>(channel),
                                                     Attenuation(levels[channel])};
        app.ZCU().ZCU_Request_AdjustVolume(&request);
    }
    return kOk;
}

int SetVolumesV3(CK740ControlApp& app, int zcuID, const int* levels) {
    tagADJUST_DEVICE_VOLUME_REQ_V3 request{};
    std::memset(&request.volumes, kVolumeUnchanged, sizeof(request.volumes));
    request.zcuID = static_cast<uint32_t>(zcuID);
    for (int channel = 0; channel < kHostChannels; ++channel) {
        if (IsLevel(levels[channel])) { request.volumes.levels[channel] = Attenuation(levels[channel]); }
    }
    const int result = app.ZCU().ZCU_Request_AdjustVolume(&request);
    LogCall(app, Format("K740_SetVolume(%d,%d,%d,%d,%d,%d,%d,%d,%d)", zcuID, levels[0], levels[1], levels[2], levels[3],
                        levels[4], levels[5], levels[6], levels[7]));
    return result;
}

/// @return the text at an offset of a version answer; one without an end ends with the texts
std::string VersionText(const tagQUERY_DEVICE_VERSION_RSP& answer, std::size_t offset) {
    const char* text = reinterpret_cast<const char*>(answer.version.texts) + offset;
    return std::string(text, strnlen(text, sizeof(answer.version.texts) - offset));
}

std::string DescribeVersion(const tagQUERY_DEVICE_VERSION_RSP& answer, int deviceType) {
    const std::string kernel = VersionText(answer, kKernelVersionOffset);
    const std::string application = VersionText(answer, kApplicationVersionOffset);
    const std::string mcu = VersionText(answer, kMCUVersionOffset);
    switch (deviceType) {
    case kDeviceZoneControllerV2:
    case kDeviceZoneController:
    case kDeviceAuxInterface:
        return "APP:" + application + ", MCU:" + mcu + ", Kernel:" + kernel;
    case kDevicePagingStation:
        return "APP:" + application + ", Kernel:" + kernel;
    case kDeviceVirtualZoneController:
    case kDeviceVirtualPagingStation:
        return std::string("APP:") + kSDKVersion;
    default:
        return {};
    }
}

} // namespace

extern "C" K740_API int K740_SetVolume(int deviceID, int* levels) {
    return Exported([=](CK740ControlApp& app) {
        const auto isValid = [](int level) { return level == kLeaveUnchanged || IsLevel(level); };
        if (levels == nullptr || !std::all_of(levels, levels + kHostChannels, isValid)) { return kBadLevel; }
        switch (app.Devices().GetDeviceType(deviceID)) {
        case kDeviceZoneControllerV2:
            return SetVolumesV2(app, deviceID, levels);
        case kDeviceZoneController:
            return SetVolumesV3(app, deviceID, levels);
        default:
            return kFail;
        }
    });
}

extern "C" K740_API int K740_GetVolume(int deviceID) {
    return Exported([=](CK740ControlApp& app) {
        switch (app.Devices().GetDeviceType(deviceID)) {
        case kDeviceZoneControllerV2:
            app.ZCU().ZCU_Request_GetVolume_V2(deviceID);
            return kOk;
        case kDeviceZoneController:
            app.ZCU().ZCU_Request_GetVolume_V3(deviceID);
            return kOk;
        default:
            return kFail;
        }
    });
}

extern "C" K740_API int K740_CloseZones(const char* zones) {
    return Exported([=](CK740ControlApp& app) {
        std::string zoneText = Text(zones);
        if (app.Devices().IsZoneStringValid(zoneText) != 1) { return kFail; }
        for (const std::string& piece : SplitZoneString(zoneText)) {
            if (piece.size() != kZoneItemLength) { continue; }
            const ZoneItem item = ParseZoneItem(piece);
            if (item.mask < 1 || item.mask > kEveryZoneMask) { continue; }
            app.ZCU().ZCU_Request_CloseZones(item.deviceID, static_cast<unsigned short>(item.mask));
        }
        LogCall(app, Format("K740_CloseZones('%s')", zones));
        return kOk;
    });
}

extern "C" K740_API int K740_GetDeviceVersion(int deviceID, char* text, int size) {
    return Exported([=](CK740ControlApp& app) {
        const auto room = static_cast<std::size_t>(text == nullptr ? 0 : std::max(size, 0));
        if (room > 0) { std::memset(text, 0, room); }
        if (!app.Devices().IsDeviceIDValid(deviceID)) { return kFail; }
        tagQUERY_DEVICE_VERSION_RSP answer{};
        const int error = app.ZCU().GetDeviceVersion(deviceID, &answer);
        if (error != 0) { return error; }
        const std::string version = DescribeVersion(answer, app.Devices().GetDeviceType(deviceID));
        if (room > 0) { version.copy(text, room); }
        return static_cast<int>(version.size());
    });
}

extern "C" K740_API int K740_EnterVAMode(int deviceID, int priority) {
    return Exported([=](CK740ControlApp& app) { return app.ZCU().ZCU_Request_EnterEmergency(deviceID, priority); });
}

extern "C" K740_API int K740_ExitVAMode(int deviceID, int priority) {
    return Exported([=](CK740ControlApp& app) { return app.ZCU().ZCU_Request_ExitEmergency(deviceID, priority); });
}
