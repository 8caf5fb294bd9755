// The task engine: accepts broadcast tasks and runs each on a thread of its own.
#pragma once

#include "common/bounded_table.h"
#include "common/wake_list.h"
#include "player/channel_table.h"
#include "player/resampler_slots.h"
#include "player/task_records.h"
#include "player/task_status.h"
#include "player/task_streams.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

class CK740ControlApp;

/// Any thread may call anything. The host's callbacks are called with no lock held.
class CPlayer {
public:
    explicit CPlayer(CK740ControlApp& app) : m_app(app) {}
    virtual ~CPlayer() = default;

    /// Checks, notes and starts a task. @return 0; -1 bad argument; -2 it is running; -3 no free channel
    int AddAudioTaskToTaskQueue(long taskID, long volume, long priority, long recovery, const std::string& zones,
                                long dryContactOutput);
    /// @return 0; -1 bad argument; -2 it is running
    int AddNetTaskToTaskQueue(long taskID, long priority, long deviceID, const std::string& multicastIP, long auxPort,
                              long recovery, const std::string& zones, long dryContactOutput);
    /// Starts the thread of the oldest queued task.
    void StartNewTask();

    /// Makes the thread of a task end. @return the state that the task had
    short StopTask(int taskID);
    /// Makes more zone controllers join a broadcasting task. @return 0; -1 bad zones; -2 not broadcasting
    int AddZones(int taskID, std::string zones);
    /// Gives audio to a task. @return 0; -1 too long or no room; -3 not broadcasting
    int PushTaskStream(int channelID, int taskID, const unsigned char* data, unsigned length);

    /// @return 1..255, then 1 again
    uint16_t GetZCUTaskSequence();
    /// Gives a free channel to the task. @return the channel, kNoChannel when there is none
    int NewChannel(int taskID, std::string& multicastIP);

    /// Waits until the thread of an earlier acceptance of the same ID has ended: it still has to close the audio, and
    /// its request, which carries the ID alone, would close the new task's. Then waits a little, so that the host hears
    /// of the former end first; no longer, because the host may wait for the new task in that very callback.
    /// @return false when the library shuts down meanwhile
    bool AwaitPredecessor(const tagTASK_QUEUE& task);
    /// Tells the host of a task that goes on.
    void ReportRunning(int taskID, short status);
    /// Ends a task's thread: notes its last state and tells the host. Throws nothing.
    void Conclude(const tagTASK_QUEUE& task, short status);
    /// Wakes the threads of all tasks, so that they see the exit flag.
    void WakeTasks();
    /// Logs a line of the player.
    void Log(uint8_t level, const std::string& text);

    CTaskStatusTable& Status() { return m_status; }
    CChannelTable& Channels() { return m_channels; }
    CTaskStreams& Streams() { return m_streams; }
    CResamplerSlots& Resamplers() { return m_resamplers; }
    /// Raised by task ID when a task is stopped, for the threads of tasks without a channel.
    CWakeList& StopWaiters() { return m_stopWaiters; }

private:
    void ThreadPlayAudioStreamTask(const tagTASK_QUEUE& task);
    void ThreadPlayNetAUXTask(const tagTASK_QUEUE& task);
    int Reject(const std::string& reason);
    int Accept(tagTASK_QUEUE& task, std::optional<int> limit, const std::string& alreadyRunning);

    CK740ControlApp& m_app;
    static constexpr std::size_t kMaxQueuedTasks = kLastTaskID; // never reached: each is taken at once

    CBoundedTable<tagTASK_QUEUE, kMaxQueuedTasks> m_queue;
    CTaskStatusTable m_status;
    CChannelTable m_channels;
    CTaskStreams m_streams;
    CResamplerSlots m_resamplers;
    CWakeList m_stopWaiters;
    CQBSem m_sequenceLock;
    uint16_t m_sequence K740_GUARDED_BY(m_sequenceLock) = 0;
};
