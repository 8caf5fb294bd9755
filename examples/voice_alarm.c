/* Switches a zone controller to voice alarm and back. Requests are sent once and may be lost on the network, so each is
 * repeated until the controller's status shows it. */
#define _POSIX_C_SOURCE 200809L

#include <k740/k740.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

static const char kUsage[] = "usage: voice_alarm SECONDS [HOST [CONTROLLER [ID]]]\n"
                             "  SECONDS     how long the voice alarm lasts\n"
                             "  HOST        address of this machine, 192.168.1.166\n"
                             "  CONTROLLER  address of the zone controller, 192.168.1.33\n"
                             "  ID          and its ID, 33\n";

enum { kZoneController = 1 }; /* device type */
enum { kOffLine = 0 };
enum { kPriority = 255, kMostRequests = 10 /* one a second */, kReportSeconds = 5 };

static pthread_mutex_t g_lock = PTHREAD_MUTEX_INITIALIZER;
static int g_status = kOffLine; /* of the zone controller */

/* Runs on a thread of the library, within half a second of a change. */
static int OnZCUStatus(int deviceID, int status, int fault, int* amplifiers, int extraA, int extraB) {
    (void)amplifiers;
    (void)extraA;
    (void)extraB;
    printf("zone controller %d: status %d, fault %d\n", deviceID, status, fault);
    pthread_mutex_lock(&g_lock);
    g_status = status;
    pthread_mutex_unlock(&g_lock);
    return 0;
}

static int Status(void) {
    pthread_mutex_lock(&g_lock);
    const int status = g_status;
    pthread_mutex_unlock(&g_lock);
    return status;
}

static void Sleep(int seconds) {
    const struct timespec period = {.tv_sec = seconds};
    nanosleep(&period, NULL);
}

static int AwaitOnLine(void) {
    for (int second = 0; second < kReportSeconds && Status() == kOffLine; ++second) { Sleep(1); }
    return Status();
}

/* What number a controller shows in voice alarm is its own affair: it counts when its status is no longer the usual
 * one. A controller that goes off line shows nothing. */
static int EnterUntilShown(int id, int usual) {
    for (int request = 0; request < kMostRequests && (Status() == usual || Status() == kOffLine); ++request) {
        K740_EnterVAMode(id, kPriority);
        Sleep(1);
    }
    return Status() != usual && Status() != kOffLine;
}

static int LeaveUntilShown(int id, int usual) {
    for (int request = 0; request < kMostRequests && Status() != usual; ++request) {
        K740_ExitVAMode(id, kPriority);
        Sleep(1);
    }
    return Status() == usual;
}

static const char* Alarm(int id, int seconds) {
    const int usual = AwaitOnLine();
    if (usual == kOffLine) { return "The zone controller is off line."; }
    const int entered = EnterUntilShown(id, usual);
    if (entered) { Sleep(seconds); }
    const int left = LeaveUntilShown(id, usual); /* also when no status has shown the voice alarm: it may be on */
    return !entered ? "The zone controller does not show voice alarm." : !left ? "It does not leave it." : NULL;
}

int main(int argc, char** argv) {
    if (argc < 2 || argc > 5) {
        fputs(kUsage, stderr);
        return EXIT_FAILURE;
    }
    const int id = argc > 4 ? atoi(argv[4]) : 33;
    setvbuf(stdout, NULL, _IOLBF, 0); /* each line at once, through a pipe too */
    const int ready = K740_Initialize() == 0 && K740_SetNIC(argc > 2 ? argv[2] : "192.168.1.166") == 0 &&
                      K740_SetDeviceCallback(OnZCUStatus, NULL, NULL, NULL, NULL, NULL, NULL) == 0 &&
                      K740_AddDevice(id, kZoneController, argc > 3 ? argv[3] : "192.168.1.33") == 0;
    const char* error = ready ? Alarm(id, atoi(argv[1])) : "An argument was refused: see k740log/k740sdk.log";
    if (error != NULL) { fprintf(stderr, "%s\n", error); }
    K740_Deinitialize();
    return error == NULL ? EXIT_SUCCESS : EXIT_FAILURE;
}
