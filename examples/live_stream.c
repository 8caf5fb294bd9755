/* Broadcasts live audio from a file or from standard input to zone 1 of a zone controller, until it ends or Ctrl-C. */
#define _POSIX_C_SOURCE 200809L

#include <k740/k740.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const char kUsage[] = "usage: live_stream FILE|- [HOST [CONTROLLER [ID]]]\n"
                             "  FILE  44.1 kHz, 16 bit, mono; - for standard input\n"
                             "  HOST  address of this machine, 192.168.1.166\n"
                             "  CONTROLLER, ID  of the zone controller, 192.168.1.33 and 33\n";

enum { kZoneController = 1 }; /* device type */
enum { kEnded = 0, kAccepted = 1 };
enum { kTask = 1001, kVolume = 100 /* percent */, kPriority = 70 };
enum { kBlockMs = 20, kBlockBytes = 1764 /* kBlockMs of audio */, kSilentBlocks = 3 };

static pthread_mutex_t g_lock = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t g_changed = PTHREAD_COND_INITIALIZER;
static int g_status = kAccepted; /* of the task */
static volatile sig_atomic_t g_interrupted = 0;

static void OnSignal(int number) {
    (void)number;
    g_interrupted = 1;
}

/* Runs on threads of the library. */
static int OnTaskStatus(int taskID, int status) {
    printf("task %d: state %d\n", taskID, status);
    pthread_mutex_lock(&g_lock);
    g_status = status;
    pthread_cond_signal(&g_changed);
    pthread_mutex_unlock(&g_lock);
    return 0;
}

/* Every accepted task gets a further state within some 4 s, a stopped one within 150 ms. */
static int AwaitStatusBeyond(int former) {
    pthread_mutex_lock(&g_lock);
    while (g_status == former) { pthread_cond_wait(&g_changed, &g_lock); }
    const int status = g_status;
    pthread_mutex_unlock(&g_lock);
    return status;
}

static void Send(unsigned char* block, K740_PACING* pacing) {
    K740_SleepStart(pacing);
    if (K740_SendAudioStreamProc(kTask, block, kBlockBytes) != 0) { g_interrupted = 1; } /* the task is over */
    K740_SleepEnd(kBlockMs, pacing);
}

static void Stream(FILE* input) {
    unsigned char block[kBlockBytes] = {0};
    K740_PACING pacing = {0};
    while (!g_interrupted && fread(block, 1, sizeof(block), input) > 0) {
        Send(block, &pacing);
        memset(block, 0, sizeof(block)); /* a last block that is not full ends in silence */
    }
    for (int i = 0; i < kSilentBlocks; ++i) { Send(block, &pacing); } /* whole frames of 4096 bytes are sent, no rest */
}

static int Broadcast(int id, FILE* input) {
    char zones[16];
    snprintf(zones, sizeof(zones), "%04X01", (unsigned)id); /* zone 1: bit 0 */
    const int result = K740_StartAudioStreamTask(kTask, kVolume, kPriority, 0, zones, 0);
    const int status = result == 0 ? AwaitStatusBeyond(kAccepted) : result;
    if (status <= kEnded) { return 0; }
    Stream(input);
    K740_StopTask(kTask);
    return AwaitStatusBeyond(status) == kEnded;
}

int main(int argc, char** argv) {
    FILE* input = argc < 2 ? NULL : strcmp(argv[1], "-") == 0 ? stdin : fopen(argv[1], "rb");
    if (input == NULL) {
        fputs(kUsage, stderr);
        return EXIT_FAILURE;
    }
    const struct sigaction interrupt = {.sa_handler = OnSignal}; /* without SA_RESTART, so that reading ends too */
    sigaction(SIGINT, &interrupt, NULL);
    setvbuf(stdout, NULL, _IOLBF, 0); /* each line at once, through a pipe too */
    const int id = argc > 4 ? atoi(argv[4]) : 33;
    const int done = K740_Initialize() == 0 && K740_SetNIC(argc > 2 ? argv[2] : "192.168.1.166") == 0 &&
                     K740_SetDeviceCallback(NULL, NULL, NULL, OnTaskStatus, NULL, NULL, NULL) == 0 &&
                     K740_AddDevice(id, kZoneController, argc > 3 ? argv[3] : "192.168.1.33") == 0 &&
                     Broadcast(id, input);
    if (!done) { fprintf(stderr, "The broadcast failed; k740log/k740sdk.log says why.\n"); }
    K740_Deinitialize();
    return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
