/* The host of a train: a virtual zone controller that reports the state of the train and plays what stations ask it to.
 * What it would play through its loudspeakers goes into a file. */
#define _POSIX_C_SOURCE 200809L

#include <k740/k740.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

static const char kUsage[] = "usage: train SECONDS FILE [HOST [STATUS]]\n"
                             "  SECONDS  how long the train is on line; Ctrl-C ends it earlier\n"
                             "  FILE     for what it plays, samples without a header: 44.1 kHz, 16 bit, mono\n"
                             "  HOST     address of this machine, 192.168.1.166\n"
                             "  STATUS   of the train that stations see: 1, 2 or 3, 1 by default\n";

enum { kVirtualZoneController = 9 }; /* device type */
enum { kTrain = 900 };
enum { kPlayingBegins = 1 };       /* message */
enum { kStatusPeriodSeconds = 5 }; /* after 60 s without a status the train counts as off line */

static pthread_mutex_t g_lock = PTHREAD_MUTEX_INITIALIZER;
static FILE* g_file = NULL; /* null when nothing is to be written any more */

/* Both callbacks run on threads of the library, several at the same time: audio may come before message 1 is handled.
 */
static int OnTrainMessage(int sourceID, int deviceID, int message) {
    printf("train %d: %s %d\n", deviceID, message == kPlayingBegins ? "plays for" : "has played for", sourceID);
    return 0;
}

static int OnTrainAudio(int sourceID, int taskID, unsigned char* audio, int length) {
    (void)sourceID;
    (void)taskID;
    pthread_mutex_lock(&g_lock);
    if (g_file != NULL && fwrite(audio, 1, (size_t)length, g_file) < (size_t)length) { perror("writing the audio"); }
    pthread_mutex_unlock(&g_lock);
    return 0;
}

/* Held back in every thread that is started afterwards, so that the signals wait for Run. */
static sigset_t HoldBackEndSignals(void) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, NULL);
    return signals;
}

static void Run(int seconds, int status, const sigset_t* endSignals) {
    while (seconds > 0) {
        K740_SetTrainStatus(kTrain, status);
        const int pause = seconds < kStatusPeriodSeconds ? seconds : kStatusPeriodSeconds;
        const struct timespec period = {.tv_sec = pause};
        if (sigtimedwait(endSignals, NULL, &period) > 0) { return; }
        seconds -= pause;
    }
}

static int CloseFile(void) {
    pthread_mutex_lock(&g_lock);
    const int closed = fclose(g_file);
    g_file = NULL;
    pthread_mutex_unlock(&g_lock);
    return closed == 0;
}

int main(int argc, char** argv) {
    if (argc < 3 || argc > 5) {
        fputs(kUsage, stderr);
        return EXIT_FAILURE;
    }
    g_file = fopen(argv[2], "wb");
    if (g_file == NULL) {
        perror(argv[2]);
        return EXIT_FAILURE;
    }
    setvbuf(stdout, NULL, _IOLBF, 0); /* each line at once, through a pipe too */
    const sigset_t endSignals = HoldBackEndSignals();
    const int ready = K740_Initialize() == 0 && K740_SetNIC(argc > 3 ? argv[3] : "192.168.1.166") == 0 &&
                      K740_SetTrainCallback(OnTrainMessage, OnTrainAudio) == 0 &&
                      K740_AddDevice(kTrain, kVirtualZoneController, "") == 0;
    if (ready) {
        Run(atoi(argv[1]), argc > 4 ? atoi(argv[4]) : 1, &endSignals);
    } else {
        fprintf(stderr, "The library refused an argument; k740log/k740sdk.log says which.\n");
    }
    K740_Deinitialize();
    return CloseFile() && ready ? EXIT_SUCCESS : EXIT_FAILURE;
}
