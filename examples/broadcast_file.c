/* Broadcasts a WAV file to zone 1 of a zone controller and waits until it is over. */
#define _POSIX_C_SOURCE 200809L

#include <k740/k740.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>

static const char kUsage[] = "usage: broadcast_file FILE [HOST [CONTROLLER [ID]]]\n"
                             "  FILE        WAV: 44.1 kHz, 16 bit, mono\n"
                             "  HOST        address of this machine, 192.168.1.166\n"
                             "  CONTROLLER  address of the zone controller, 192.168.1.33\n"
                             "  ID          and its ID, 33\n";

enum { kZoneController = 1 }; /* device type */
enum { kEnded = 0, kAccepted = 1 };
enum { kTask = 1001, kVolume = 100 /* percent */, kPriority = 70, kOnce = 1 };

static pthread_mutex_t g_lock = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t g_changed = PTHREAD_COND_INITIALIZER;
static int g_status = kAccepted; /* of the task */

/* Runs on threads of the library. */
static int OnTaskStatus(int taskID, int status) {
    printf("task %d: state %d\n", taskID, status);
    pthread_mutex_lock(&g_lock);
    g_status = status;
    pthread_cond_signal(&g_changed);
    pthread_mutex_unlock(&g_lock);
    return 0;
}

/* A task that was broadcasting reports its end within some 150 ms after it was stopped. */
static void AwaitEnd(void) {
    pthread_mutex_lock(&g_lock);
    while (g_status > kEnded) { pthread_cond_wait(&g_changed, &g_lock); }
    pthread_mutex_unlock(&g_lock);
}

/* The library leaves out a file that it cannot open; better to say so before anything is started. */
static int IsReadable(const char* path) {
    FILE* file = fopen(path, "rb");
    if (file == NULL) {
        perror(path);
        return 0;
    }
    fclose(file);
    return 1;
}

static int SetUp(const char* host, const char* controller, int id) {
    if (K740_Initialize() == 0 && K740_SetNIC(host) == 0 &&
        K740_SetDeviceCallback(NULL, NULL, NULL, OnTaskStatus, NULL, NULL, NULL) == 0 &&
        K740_AddDevice(id, kZoneController, controller) == 0) {
        return 1;
    }
    fprintf(stderr, "The library refused an argument; k740log/k740sdk.log says which.\n");
    return 0;
}

static int Broadcast(int id, const char* file) {
    char zones[16];
    snprintf(zones, sizeof(zones), "%04X01", (unsigned)id); /* zone 1: bit 0 */
    const int result = K740_StartAudioFileTask(kTask, kVolume, kPriority, 0, zones, 0, file, kOnce);
    if (result != 0) {
        fprintf(stderr, "The broadcast failed: %d\n", result);
        return EXIT_FAILURE;
    }
    AwaitEnd();
    return EXIT_SUCCESS;
}

int main(int argc, char** argv) {
    if (argc < 2 || argc > 5) {
        fputs(kUsage, stderr);
        return EXIT_FAILURE;
    }
    const char* host = argc > 2 ? argv[2] : "192.168.1.166";
    const char* controller = argc > 3 ? argv[3] : "192.168.1.33";
    const int id = argc > 4 ? atoi(argv[4]) : 33;
    if (!IsReadable(argv[1])) { return EXIT_FAILURE; }
    setvbuf(stdout, NULL, _IOLBF, 0); /* each line at once, through a pipe too */
    const int result = SetUp(host, controller, id) ? Broadcast(id, argv[1]) : EXIT_FAILURE;
    K740_Deinitialize();
    return result;
}
