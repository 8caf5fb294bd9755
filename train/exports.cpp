// The exported function of the train interface.
#include "app/exported.h"

extern "C" K740_API int K740_SetTrainStatus(int deviceID, int status) {
    return Guarded([=](CK740ControlApp& app) { return app.Train().NewTrainStatus({deviceID, status}); });
}
