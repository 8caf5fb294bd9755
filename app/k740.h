/**
 * @file
 * The C interface of a controller for IP public-address and voice-alarm installations.
 *
 * Initialisation: every function but K740_Initialize, K740_SleepStart, K740_SleepEnd and K740_SetTrainStatus
 * initialises the library when that has not happened yet, and returns -1 when it fails. A process initialises once:
 * K740_Deinitialize stops the library for good, but for push-to-talk audio that is still being received.
 *
 * Threads: any function may be called from any thread, also from within a callback. Callbacks run on threads of the
 * library, several at once; PTASKSTATUS also on the caller's, inside the functions that start and stop tasks, so hold
 * no lock of yours across these that the callback takes. Those called on a receiving thread hold up its port while they
 * run, so a callback should return soon, must not wait for an answer of a device and must not end its thread. Pointers
 * handed to a callback are valid during the call only. Replacing a callback does not wait for a call in progress.
 * Threads that are busy when K740_Deinitialize is called finish their step, which can take some 10 s, and may still
 * call back.
 *
 * Texts are zero-terminated. A null text counts as an empty one unless stated otherwise. All audio is signed 16-bit
 * little-endian mono PCM unless stated otherwise. Results are -1 for a bad argument unless stated otherwise; a refused
 * call changes nothing.
 *
 * The library writes its log into the directory "k740log" below the directory that is current when it is initialised,
 * ignores SIGPIPE for the process and sets the process's limit of open files to 50000.
 */
#ifndef K740_H
#define K740_H

#include <stdint.h>

#if defined(__GNUC__)
#define K740_API __attribute__((visibility("default")))
#else
#define K740_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup callback_types Callback types
 * The library ignores what a callback returns.
 * @{
 */

/**
 * State of a zone controller: after every change, within some half second, and once every 5 s. It is sent a heartbeat
 * every 10 s, and is off line when it has not reported for more than 60 s. Virtual controllers are not told of.
 *
 * @param deviceID   controller, 1..999, or a device of type 4..8 with such an ID
 * @param status     1, 2, 3 or 4 as the controller reports it, 0 for off line and everything else
 * @param fault      fault byte of the controller
 * @param amplifiers states of its eight amplifiers
 * @param extraA     first extra status byte
 * @param extraB     second extra status byte
 */
typedef int (*PZCUSTATUS)(int deviceID, int status, int fault, int* amplifiers, int extraA, int extraB);

/**
 * State of a paging station, once every 5 s. It is sent a heartbeat every 10 s, and is off line when it has not
 * reported for more than 60 s.
 *
 * @param deviceID station, 5000..5999
 * @param state    0 off line, 2 as the station reports it, 1 for every other state
 * @param activity second byte of the report plus one
 * @param wordA    first word of the report
 * @param extra    last byte of the report
 * @param wordB    second word of the report
 */
typedef int (*PRPKSTATUS)(int deviceID, int state, int activity, int wordA, int extra, int wordB);

/**
 * States of the zones of a zone controller, together with PZCUSTATUS.
 *
 * @param deviceID controller, 1..999
 * @param states   eight zone states; 64 is added for a zone with a fault
 * @param tasks    eight task words
 */
typedef int (*PZONESTATUS)(int deviceID, int* states, unsigned* tasks);

/**
 * Volumes that a zone controller has reported.
 *
 * @param deviceID controller, 1..999
 * @param volumes  eight volumes (device type 0: four and then four times -1) or ten (device type 1), 0 quiet to
 *                 19 loud, -1 where there is no such channel; below that when a controller reports an attenuation of
 *                 more than 19
 */
typedef int (*PZCUVOLUME)(int deviceID, int* volumes);

/**
 * State of a task, at every change.
 *
 * An ID that is started again while its former run still ends reports both: 1, 2, 1, 0, 2 for instance, where the 0
 * after the second 1 is the former run's. Within a report of 1 or 2 the task cannot end: K740_StartAudioFileTask is
 * refused there, and do not wait there for anything else that the end of this task brings.
 *
 * @param taskID task, 1..50000
 * @param status 0 ended; 1 accepted; 2 broadcasting; -1 no free channel or no thread; -2 group not joined; -3 no zone
 *               controller could be triggered, or the task failed for want of memory. A controller that joins after
 *               -3 is not told to close, K740_CloseZones does it
 */
typedef int (*PTASKSTATUS)(int taskID, int status);

/**
 * Audio of a monitored zone.
 *
 * @param deviceID zone controller
 * @param zone     1..8
 * @param audio    44.1 kHz
 * @param length   bytes, up to 4096
 */
typedef int (*PMONITORZONE)(int deviceID, int zone, unsigned char* audio, int length);

/**
 * Event of a virtual zone controller.
 *
 * @param sourceID device that asked it to play
 * @param deviceID virtual zone controller
 * @param message  1 play request accepted, 2 playing ended
 */
typedef int (*PTRAINMESSAGE)(int sourceID, int deviceID, int message);

/**
 * Audio that a virtual zone controller plays. Audio and message 2 come on one thread, message 1 on another: expect
 * audio while message 1 is still being handled, when the stream runs already even before it.
 *
 * @param sourceID device that asked it to play
 * @param taskID   task of that device
 * @param audio    44.1 kHz
 * @param length   bytes, up to 4096
 */
typedef int (*PTRAINAUDIO)(int sourceID, int taskID, unsigned char* audio, int length);

/**
 * Push-to-talk audio of a paging station.
 *
 * @param deviceID station
 * @param kind     3
 * @param audio    44.1 kHz
 * @param length   bytes, up to 4096
 */
typedef int (*PRPKPTTAUDIO)(int deviceID, int kind, unsigned char* audio, int length);

/**
 * Event of an intercom call. Runs on a receiving thread; K740_Accept, K740_HangUp and K740_Invite may be called in it.
 *
 * @param stationID  paging station
 * @param intercomID virtual paging station
 * @param message    1 the station invites, 2 it hung up or refused, 3 it accepted
 */
typedef int (*PINTERCOMMESSAGE)(int stationID, int intercomID, int message);

/**
 * Audio of a station that is in a call with an intercom. One block may follow the end of the call.
 *
 * @param stationID paging station
 * @param audio     44.1 kHz
 * @param length    bytes, up to 4096
 */
typedef int (*PINTERCOMAUDIO)(int stationID, unsigned char* audio, int length);

/** @} */

/**
 * @defgroup lifecycle Lifecycle and configuration
 * @{
 */

/**
 * Initialises the library: sets every setting to its default, creates "k740log", starts the library's threads and
 * opens UDP ports 28001, 29001 and 29002. Takes about 50 ms, on a busy machine up to 1 s. A port that cannot be opened
 * is reported in the log only.
 *
 * @return 0; -1 when the library has been initialised already, also after K740_Deinitialize
 */
K740_API int K740_Initialize(void);

/**
 * Asks all threads to end, frees the ports and writes the log. Broadcasting tasks end with their close requests to the
 * devices. Waits for all that some 50 ms, 300 ms at most; what is not over by then, such as a task that still waits for
 * its zone controllers or a port whose receiving thread is in a callback, ends by itself. Devices and settings stay.
 * Nothing runs any more but the reception of push-to-talk audio, which ends with its group or its station, and a call
 * of K740_StartAudioFileTask that has passes before it, and nothing is logged any more.
 *
 * @return 0; -1 when the library had not been initialised and cannot be
 */
K740_API int K740_Deinitialize(void);

/**
 * Sets the device ID under which the library speaks, in every packet from now on but the audio of tasks that broadcast
 * already.
 *
 * @param nodeID 9500..9999, 9500 by default
 * @return       0; -1 out of range
 */
K740_API int K740_SetNodeID(int nodeID);

/**
 * Sets the format of the audio given to K740_SendAudioStreamProc. Every call of it from now on is read so, that for a
 * running task too, whose room is for the format of the moment at which it began to broadcast: change it only while no
 * stream task runs.
 *
 * @param format 0: 44.1 kHz (default), 1: 22.05 kHz
 * @return       0; -1 for any other value
 */
K740_API int K740_SetAudioStreamFormat(int format);

/**
 * Sets the first of the 200 consecutive multicast groups that stream tasks use; 199 more must follow it below
 * 240.0.0.0. It counts until the first stream task takes a group.
 *
 * @param address group, first octet 224..239, "225.0.0.1" by default; blanks around it are dropped
 * @return        0; -1 for null or no group
 */
K740_API int K740_SetFirstMulticastIP(const char* address);

/**
 * Sets the network interface for multicast, for what starts from now on.
 *
 * @param address IPv4 address of the interface, without blanks; by default the system chooses. One that is not the
 *                machine's makes tasks fail with state -2
 * @return        0; -1 for null, a text shorter than 6 characters, or when the first octet is no unicast network (0,
 *                127, 224..239, above 255)
 */
K740_API int K740_SetNIC(const char* address);

/**
 * Switches voice-alarm (emergency) mode of a zone controller on.
 *
 * @param deviceID controller, 1..999
 * @param priority 1..255, 255 being the highest
 * @return         0 when the request was sent; -1 otherwise, also for an unknown device
 */
K740_API int K740_EnterVAMode(int deviceID, int priority);

/**
 * Switches voice-alarm (emergency) mode of a zone controller off.
 *
 * @param deviceID controller, 1..999
 * @param priority 1..255, 255 being the highest
 * @return         0 when the request was sent; -1 otherwise, also for an unknown device
 */
K740_API int K740_ExitVAMode(int deviceID, int priority);

/** Pacing record of a host thread; zero it before its first use. */
typedef struct K740_PACING {
    int64_t seconds;          /**< start of the period, of the real-time clock */
    int64_t microseconds;     /**< of it, beyond the seconds */
    unsigned char unused[20]; /**< reserved */
    int32_t correction;       /**< milliseconds carried from one period to the next */
} K740_PACING;

/**
 * Marks the start of a period. Does not initialise the library.
 *
 * @param pacing receives the start; null does nothing
 */
K740_API void K740_SleepStart(K740_PACING* pacing);

/**
 * Sleeps the length of a period less what former periods ran over, which is counted from -5 to 5 ms. What the period
 * at hand runs over shortens the next one. Does not initialise the library.
 *
 * @param periodMs length of the period in milliseconds
 * @param pacing   marked by K740_SleepStart at the start of this period; null does not sleep
 * @return         milliseconds since K740_SleepStart; 0 for null
 */
K740_API int K740_SleepEnd(unsigned periodMs, K740_PACING* pacing);

/**
 * Switches the log of callback invocations: one file per callback type, such as "k740log/PTASKSTATUS.log". Each
 * callback that returns while the switch is on becomes one line: time, tab, name and arguments, cut at 2047 characters.
 * Lines are written every 200 ms; a file that has grown above 52428800 bytes is deleted with what was just written.
 *
 * @param enable 1 on, 0 off (default)
 * @return       0; -1 for any other value
 */
K740_API int K740_EnableCallbackLog(int enable);

/** @} */

/**
 * @defgroup callbacks Callbacks
 * @{
 */

/**
 * Registers the callbacks of devices and tasks. A null pointer switches its callback off.
 *
 * @param zcuStatus   states of zone controllers
 * @param zoneStatus  states of their zones
 * @param zcuVolume   their volumes
 * @param taskStatus  states of tasks
 * @param monitorZone audio of monitored zones
 * @param rpkStatus   states of paging stations
 * @param rpkPTTAudio their push-to-talk audio
 * @return            0
 */
K740_API int K740_SetDeviceCallback(PZCUSTATUS zcuStatus, PZONESTATUS zoneStatus, PZCUVOLUME zcuVolume,
                                    PTASKSTATUS taskStatus, PMONITORZONE monitorZone, PRPKSTATUS rpkStatus,
                                    PRPKPTTAUDIO rpkPTTAudio);

/**
 * Registers the callbacks of virtual zone controllers. A null pointer switches its callback off.
 *
 * @param trainMessage begin and end of what they play
 * @param trainAudio   audio that they play
 * @return             0
 */
K740_API int K740_SetTrainCallback(PTRAINMESSAGE trainMessage, PTRAINAUDIO trainAudio);

/**
 * Registers the callbacks of intercom calls. A null pointer switches its callback off.
 *
 * @param intercomMessage events of calls; without it intercoms can neither call nor answer
 * @param intercomAudio   audio of stations in a call
 * @return                0
 */
K740_API int K740_SetIntercomCallback(PINTERCOMMESSAGE intercomMessage, PINTERCOMAUDIO intercomAudio);

/** @} */

/**
 * @defgroup devices Devices
 * @{
 */

/**
 * Registers a device and greets it: a zone controller or paging station is sent a heartbeat at once and counts as off
 * line until it reports. So does a device of type 4..8 with an ID of 1..999, of which PZCUSTATUS and PZONESTATUS then
 * tell as of a controller; of virtual zone controllers they do not tell. At most 500 devices.
 *
 * @param deviceID   types 0, 1 and 9: 1..999; types 2 and 10: 5000..5999; type 3: 7000..7999; others: any
 * @param deviceType 0 and 1 zone controller (version 2, version 3), 2 paging station, 3 network AUX interface, 9
 *                   virtual zone controller and 10 virtual paging station (both played by the library itself), 4..8
 *                   others
 * @param address    IPv4 address, unique among the devices, compared as text; 49 characters are kept. A text shorter
 *                   than 6 characters or with a first octet of 0, 127, 224..239 or above 255 is refused; what is
 *                   malformed otherwise is accepted, and its device never reached. Types 9 and 10 need none, but one
 *                   that is given must be unique too
 * @return           0; -1 for a bad argument, an ID or address in use or a full table; the log says which
 */
K740_API int K740_AddDevice(int deviceID, int deviceType, const char* address);

/**
 * Asks a device for its version. Blocks until it answers, for up to some 4 s; in a callback that runs on a receiving
 * thread it may block the very port on which the answer comes.
 *
 * @param deviceID any registered device
 * @param text     receives at most size characters, zero-terminated only if there is room: "APP:a, MCU:m, Kernel:k"
 *                 for zone controllers and AUX interfaces, "APP:a, Kernel:k" for paging stations, "APP:1.0.4" for
 *                 virtual zone controllers (virtual paging stations do not answer); empty for other types. Cleared
 *                 first, also on failure. May be null
 * @param size     bytes of text
 * @return         length of the whole version in bytes, whether it fitted or not; -1 unknown device; -2 no answer;
 *                 -3 the device was removed meanwhile or has no socket
 */
K740_API int K740_GetDeviceVersion(int deviceID, char* text, int size);

/**
 * Forgets a device. A virtual zone controller stops playing, and push-to-talk audio of a paging station ends. A call of
 * an intercom ends without a message, and without a word to the paging station: K740_HangUp tells it before.
 * Push-to-talk audio may follow for about 0.2 s. Zones of a controller that are monitored stay so, and K740_MonitorZone
 * can no longer end that: end it first.
 *
 * @param deviceID any registered device
 * @return         0; -1 when it is not registered
 */
K740_API int K740_RemoveDevice(int deviceID);

/**
 * Copies the list of registered devices as text, by ascending ID. Each is its ID, three blanks, its type, one blank,
 * its address and a semicolon, such as "1   1 192.168.1.20;".
 *
 * @param buffer receives at most size characters and a terminating zero; size + 1 bytes are written, always, so it must
 *               hold as many; null asks for the length only
 * @param size   bytes, without the terminating zero; below 1 copies nothing
 * @return       length of the whole list in bytes, whether it fitted or not
 */
K740_API int K740_GetDeviceList(char* buffer, int size);

/**
 * Sets the multicast group on which a paging station sends its push-to-talk audio, which PRPKPTTAUDIO then hands on
 * until the group is changed or the station removed, even after K740_Deinitialize. Blocks until a former group is left,
 * for up to 3 s, and always that long when called in PRPKPTTAUDIO of the same station.
 *
 * @param deviceID paging station
 * @param address  group, blanks around it are dropped; empty or null switches off. Only its length (9 characters at
 *                 least) and its first octet (224..239) are looked at. One that cannot be joined is logged and tried
 *                 again
 * @return         0; -1 not a registered paging station; -2 no multicast address; -3 the reception of the former group
 *                 did not end in time, no group is set then
 */
K740_API int K740_SetRPKPTTMulticastIP(int deviceID, const char* address);

/** @} */

/**
 * @defgroup zone_controllers Zone controllers
 * @{
 */

/**
 * Sets output volumes of a zone controller. Returns without waiting; some 200 ms after the controller has acknowledged
 * a change its volumes are read, and PZCUVOLUME tells what it took.
 *
 * @param deviceID registered zone controller of type 0 or 1
 * @param levels   eight volumes, 0 quiet to 19 loud, -1 leaves a channel as it is; type 0 has four channels, and its
 *                 last four values are checked but not used
 * @return         0; -1 no such controller, or for type 1 the request could not be sent; -2 null or a value outside
 *                 -1..19
 */
K740_API int K740_SetVolume(int deviceID, int* levels);

/**
 * Asks a zone controller for its volumes. Returns without waiting; PZCUVOLUME tells them when the controller answers.
 *
 * @param deviceID registered zone controller of type 0 or 1
 * @return         0, also when the request could not be sent; -1 no such controller
 */
K740_API int K740_GetVolume(int deviceID);

/**
 * Silences zones, whatever they play. Returns without waiting.
 *
 * @param zones see @ref zones
 * @return      0, also when a request could not be sent; -1 for null or bad zones
 */
K740_API int K740_CloseZones(const char* zones);

/**
 * Starts or ends listening to what a zone plays, at most five zones at a time. Returns without waiting. PMONITORZONE
 * hands on the audio as soon as the controller has told the zone's multicast group, which it is asked at once and every
 * 3 s. After the end some audio may follow for about a quarter of a second. A monitored zone outlives the removal of
 * its controller and keeps its place among the five, and an end is refused then: end it first.
 *
 * @param deviceID registered zone controller, virtual ones too
 * @param zone     1..8
 * @param start    1 start, 0 end
 * @return         0; 1 the zone is monitored already; -1 bad argument, no such controller or no thread for it; -2 five
 *                 zones are monitored
 */
K740_API int K740_MonitorZone(int deviceID, int zone, int start);

/**
 * Tells the state of the train, which becomes the status of a virtual zone controller that those see who send it
 * heartbeats. Without a new call for 60 s the controller counts as off line, and nothing is reported. Does not
 * initialise the library.
 *
 * @param deviceID registered virtual zone controller
 * @param status   1, 2 or 3: the controller reports device state 4, and zone 1 in state 4 (idle), 5 (playing) or 8;
 *                 while it plays a task always 5. Any other value: it is off line, and nothing is reported
 * @return         0; -1 no virtual zone controller
 */
K740_API int K740_SetTrainStatus(int deviceID, int status);

/** @} */

/**
 * @defgroup zones Naming zones
 * Zones are named by a text of items separated by ";", each of six hexadecimal characters: four for the ID of the zone
 * controller and two for its zones (bit 0 = zone 1), such as "0021FF;002203". "FFFFFF" names every zone of every
 * registered controller. One item at least must name a registered controller, none may have the zones 00, and the text
 * has at most 102,400 characters, blanks around it not counted.
 */

/**
 * @defgroup tasks Tasks
 * @{
 */

/**
 * Starts a task whose audio the host then gives to K740_SendAudioStreamProc. Returns at once; PTASKSTATUS tells how the
 * task goes on: 1 (during the call), then 2 when a zone controller has joined, or -1, -2 or -3 within some 4 s.
 *
 * @param taskID           1..50000
 * @param volume           0..100 percent
 * @param priority         56..255, 255 being the highest
 * @param recovery         1: zone controllers return to what they played before; 0: their stream is ended for good
 * @param zones            see @ref zones; blanks around it are dropped
 * @param dryContactOutput 1: switch the zones' contact outputs; 0: leave them
 * @return                 0 accepted; -1 bad argument; -2 the task is accepted or broadcasting already; -3 200 tasks
 *                         are, AUX tasks included: the state becomes -1, and PTASKSTATUS is called with it
 */
K740_API int K740_StartAudioStreamTask(int taskID, int volume, int priority, int recovery, const char* zones,
                                       int dryContactOutput);

/**
 * Starts a task that broadcasts an AUX input, which its device sends to a multicast group. Returns at once;
 * PTASKSTATUS tells how the task goes on, as for K740_StartAudioStreamTask.
 *
 * @param taskID           1..50000
 * @param priority         56..255, 255 being the highest
 * @param deviceID         7000..7999 with AUX port 0..4, or 1..999 with AUX port 0..2
 * @param multicastIP      group to which the device sends, on port 28100; only an empty text is refused, and what is
 *                         no address is not noticed. The device need not be registered
 * @param auxPort          see deviceID
 * @param recovery         0 or 1, as for K740_StartAudioStreamTask
 * @param zones            see @ref zones
 * @param dryContactOutput 0 or 1, as for K740_StartAudioStreamTask
 * @return                 0 accepted; -1 bad argument; -2 the task is accepted or broadcasting already
 */
K740_API int K740_StartNetAUXTask(int taskID, int priority, int deviceID, const char* multicastIP, int auxPort,
                                  int recovery, const char* zones, int dryContactOutput);

/**
 * Plays audio files as an audio stream task. Blocks until playing is over; the task can be stopped from another thread.
 * PTASKSTATUS tells how the task goes on.
 *
 * @param taskID           1..50000
 * @param volume           0..100 percent
 * @param priority         56..255, 255 being the highest
 * @param recovery         0 or 1, as for K740_StartAudioStreamTask
 * @param zones            see @ref zones; blanks around it are dropped
 * @param dryContactOutput 0 or 1, as for K740_StartAudioStreamTask
 * @param files            paths, separated by "|", blanks around each dropped: raw PCM of 44.1 kHz behind a header of
 *                         100 bytes, which are skipped whatever they are. The audio stream format must be 0. A file
 *                         that cannot be opened is logged and left out
 * @param repeat           passes over all files, 1..65535; 0 plays without end, until the process ends. A stop of the
 *                         task and the shutdown end the file at hand but not the passes, in which each file then takes
 *                         up to some 200 ms: do not wait for a call that has many before it
 * @return                 0 played, or stopped meanwhile; -1 bad argument; -2 the task is accepted or broadcasting
 *                         already; -3 200 tasks are; -4 the task failed or was stopped before it was broadcasting,
 *                         which takes up to some 4 s, or the library shuts down; also, before anything else is looked
 *                         at and with nothing started, within PTASKSTATUS with state 1 or 2 of the same task, stopped
 *                         meanwhile
 */
K740_API int K740_StartAudioFileTask(int taskID, int volume, int priority, int recovery, const char* zones,
                                     int dryContactOutput, const char* files, int repeat);

/**
 * Stops a task. A broadcasting task ends within some 150 ms and then reports state 0, once. An accepted one first waits
 * for the answers of its zone controllers, for up to some 4 s, and then reports 0 or the state that it failed with; no
 * controller is told to close then, not even one that has joined: K740_CloseZones does it. For any other task
 * PTASKSTATUS is called with state 0 during this call.
 *
 * @param taskID task, 1..50000
 * @return       0; -1 when the ID is outside 1..50000
 */
K740_API int K740_StopTask(int taskID);

/**
 * Reads the state of a task. It is 0 as soon as K740_StopTask returns, while the task may still be closing its zone
 * controllers: only PTASKSTATUS tells the end.
 *
 * @param taskID task, 1..50000
 * @return       state of the task (see PTASKSTATUS), 0 when unknown; -1 also when the ID is outside 1..50000
 */
K740_API int K740_GetTaskStatus(int taskID);

/**
 * Lists the accepted and broadcasting tasks.
 *
 * @param ids      receives their IDs
 * @param maxCount places in ids
 * @return         number of all known tasks, failed ones included, not the number written; -1 for null or no place
 */
K740_API int K740_GetRunningTasks(int* ids, int maxCount);

/**
 * Makes more zone controllers join a broadcasting task. Returns without waiting for them. They are told nothing when
 * the task ends, only their stream is over: close their zones with K740_CloseZones.
 *
 * @param taskID task, 1..50000
 * @param zones  see @ref zones
 * @return       0; -1 for bad zones; -2 when the task is not broadcasting
 */
K740_API int K740_AddZones(int taskID, const char* zones);

/**
 * Gives audio to a broadcasting task. It is sent as soon as 2048 samples of 44.1 kHz are there; the host sets the pace.
 * Fewer are never sent: fill up the end of an announcement with zeros.
 * Never blocks for the network. A chunk is taken whole or not at all.
 *
 * @param taskID task
 * @param data   PCM of the format set by K740_SetAudioStreamFormat; copied
 * @param length bytes: 1..4096 in format 0, 1..2048 in format 1
 * @return       0; -1 bad argument, chunk too long, no room (1,920,000 bytes wait, 882,000 in format 1) or the library
 *               is shutting down; -2 the task holds no channel; -3 the task is not broadcasting
 */
K740_API int K740_SendAudioStreamProc(int taskID, unsigned char* data, int length);

/** @} */

/**
 * @defgroup paging_stations Paging stations
 * The calls below wait for the station's answer, so make none of them in a callback that runs on a receiving thread.
 *
 * An answer names neither its call nor what it is about, so that one that comes too late for its call is taken for that
 * of a later one, a start or a stop, whose result it then is: for a task when it is less than 120 s old, for monitoring
 * however old it is. The newest counts; older ones stay for the calls that follow. Two calls at a time for one station
 * may take each other's answers. After -2, do not trust the station's next result.
 * @{
 */

/**
 * Tells a paging station to start one of its own tasks. Blocks until it answers, for up to some 4 s.
 *
 * @param deviceID paging station, 5000..5999
 * @param taskID   3 or 7
 * @param priority 56..255
 * @param zones    see @ref zones; at most 97 items, fewer when IDs are above 0xFFF: each item takes five characters of
 *                 488, six with such an ID
 * @return         0 done; -1 bad argument or unknown station; -2 no answer; -3 the station refused
 */
K740_API int K740_StartRPKTask(int deviceID, int taskID, int priority, const char* zones);

/**
 * Tells a paging station to stop one of its own tasks. Blocks until it answers, for up to some 4 s.
 *
 * @param deviceID paging station, 5000..5999
 * @param taskID   3 or 7
 * @return         0 done; -1 bad argument or unknown station; -2 no answer; -3 the station refused
 */
K740_API int K740_StopRPKTask(int deviceID, int taskID);

/**
 * Tells a paging station to listen to a zone. Blocks until it answers, for up to some 4 s.
 *
 * @param deviceID registered paging station
 * @param zcuID    registered zone controller, virtual ones too
 * @param zone     1..8
 * @return         0 done; -1 bad argument or no such device; -2 no answer; -3 the station refused
 */
K740_API int K740_StartRPKMonitor(int deviceID, int zcuID, int zone);

/**
 * Tells a paging station to stop listening to the zone of the last K740_StartRPKMonitor. Blocks until it answers, for
 * up to some 4 s.
 *
 * @param deviceID registered paging station
 * @return         0 done; -1 bad argument or no such device; -2 no answer; -3 the station refused
 */
K740_API int K740_StopRPKMonitor(int deviceID);

/** @} */

/**
 * @defgroup intercoms Intercoms
 * A virtual paging station (device type 10) is an intercom: the host talks through it to paging stations, one at a
 * time. Its calls need a PINTERCOMMESSAGE callback. A call that rings for 60 s is hung up, without a message.
 * @{
 */

/**
 * Calls a paging station. It answers with message 3 (accepted) or 2 (refused).
 *
 * @param intercomID virtual paging station
 * @param stationID  paging station
 * @return           0; -1 no PINTERCOMMESSAGE; -2 no registered intercom or no registered paging station; -3 the
 *                   intercom is ringing or talking
 */
K740_API int K740_Invite(int intercomID, int stationID);

/**
 * Accepts the call of a paging station, after message 1; also ends the ringing of the intercom's own invitation, as if
 * the station had accepted. Audio of the station is heard from then on; audio to it is sent some 3 s later.
 *
 * @param intercomID virtual paging station
 * @param stationID  paging station that is told, and the intercom talks to, whoever rang
 * @return           0; -1 no PINTERCOMMESSAGE; -2 no registered intercom or no registered paging station; -3 the
 *                   intercom is not ringing
 */
K740_API int K740_Accept(int intercomID, int stationID);

/**
 * Ends a call, or refuses it. Takes some 20 ms. The station of the current or last call is told, twice, also when the
 * intercom is idle. Audio that waits to be sent is dropped.
 *
 * @param intercomID virtual paging station
 * @return           0, whether there was a call or not; -1 no PINTERCOMMESSAGE; -2 no registered intercom
 */
K740_API int K740_HangUp(int intercomID);

/**
 * Reads the state of an intercom.
 *
 * @param intercomID virtual paging station
 * @param status     receives 1 ringing, 2 talking, 3 idle; may be null
 * @param stationID  receives the paging station of the current or last call, 0 for none; may be null
 * @return           0; -1 no registered intercom
 */
K740_API int K740_GetIntercomStatus(int intercomID, int* status, int* stationID);

/**
 * Queues audio for the paging station that an intercom talks to. Sent in blocks of 4096 bytes, 46.4 ms each, from some
 * 3 s after the call was accepted on; what was queued until then is dropped. Several threads may feed one intercom,
 * each block stays whole.
 *
 * @param intercomID virtual paging station
 * @param data       44.1 kHz; copied
 * @param length     bytes, 1..1048575
 * @return           0; -1 bad argument or no PINTERCOMMESSAGE; -2 the intercom is not talking; -3 no room beside what
 *                   waits (1 MiB in all, some 12 s), the block is dropped whole
 */
K740_API int K740_SendIntercomAudio(int intercomID, unsigned char* data, int length);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
