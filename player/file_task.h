// Playing audio files as an audio stream task.
#pragma once

#include <string>
#include <vector>

class CK740ControlApp;

/// Feeds files into a broadcasting task at real time, on the calling thread, which must not hold a lock.
class CFileTask {
public:
    CFileTask(CK740ControlApp& app, int taskID) : m_app(app), m_taskID(taskID) {}

    /// Waits until the accepted task broadcasts. @return false when it failed, was stopped or the library shuts
    /// down
    bool AwaitBroadcast();
    /// Plays the files one after the other, again and again. A task that is stopped ends the file at hand, not the
    /// passes.
    /// @param repeat  passes; 0 without end
    void Play(const std::vector<std::string>& files, int repeat);

private:
    bool PlayFile(const std::string& path, int pass, int repeat);

    CK740ControlApp& m_app;
    const int m_taskID;
};
