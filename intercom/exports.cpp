// The exported functions of intercoms.
#include "app/exported.h"
#include "common/format.h"

namespace {

/// Runs a call operation of the host and logs it afterwards; nothing of it without the host's callback.
template <typename Operation, typename Describe> int CallOperation(Operation operation, Describe describe) {
    return Exported([&](CK740ControlApp& app) {
        if (app.Callbacks().intercomMessage.Get() == nullptr) { return kFail; }
        const int result = operation(app.Talker());
        LogCall(app, describe());
        return result;
    });
}

} // namespace

extern "C" K740_API int K740_Invite(int intercomID, int stationID) {
    return CallOperation([=](CTALKER& talker) { return talker.Invite(intercomID, stationID); },
                         [=] { return Format("K740_Invite(%d, %d)", intercomID, stationID); });
}

extern "C" K740_API int K740_Accept(int intercomID, int stationID) {
    return CallOperation([=](CTALKER& talker) { return talker.Accept(intercomID, stationID); },
                         [=] { return Format("K740_Accept(%d, %d)", intercomID, stationID); });
}

extern "C" K740_API int K740_HangUp(int intercomID) {
    return CallOperation([=](CTALKER& talker) { return talker.HangUp(intercomID); },
                         [=] { return Format("K740_HangUp(%d)", intercomID); });
}

extern "C" K740_API int K740_GetIntercomStatus(int intercomID, int* status, int* stationID) {
    return Exported([=](CK740ControlApp& app) {
        if (app.Devices().GetDeviceType(intercomID) != kDeviceVirtualPagingStation) { return kFail; }
        tagTALK_STATUS record;
        const bool found = app.Talker().GetTalkerStatus(intercomID, record) == 0;
        if (status != nullptr) { *status = (found ? record.status : int{kTalkIdle}) + 1; }
        if (stationID != nullptr) { *stationID = static_cast<int>(record.peerID); }
        return kOk;
    });
}

extern "C" K740_API int K740_SendIntercomAudio(int intercomID, unsigned char* data, int length) {
    return Exported([=](CK740ControlApp& app) {
        if (data == nullptr || length < 1) { return kFail; }
        return app.Talker().PushTalkAudio(intercomID, data, static_cast<std::size_t>(length));
    });
}
