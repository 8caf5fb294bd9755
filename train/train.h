// The train interface: the host says in what state the train is.
#pragma once

#include <cstdint>

class CK740ControlApp;

/// What the host says.
struct tagTRAIN_STATUS {
    int32_t deviceID; // virtual zone controller
    int32_t status;   // 1, 2 or 3; others count as unknown
};

/// Turns the train's state into the status of a virtual zone controller. Any thread.
class CTRAIN {
public:
    explicit CTRAIN(CK740ControlApp& app) : m_app(app) {}
    virtual ~CTRAIN() = default;

    /// Starts nothing.
    void Initialization() {}

    /// @return 0; -1 when the device is no virtual zone controller
    int NewTrainStatus(tagTRAIN_STATUS train);

private:
    CK740ControlApp& m_app;
};
