// What the sample host does with what the library tells it.
#pragma once

int ZCUDeviceStatus(int deviceID, int status, int fault, int* amplifiers, int extraA, int extraB);
int ZCUZoneStatus(int deviceID, int* states, unsigned* tasks);
int ZCUVolumePoc(int deviceID, int* volumes);
int TaskStatusProc(int taskID, int status);
int MonitorZoneAudioProc(int deviceID, int zone, unsigned char* audio, int length);
int RPKDeviceStatus(int deviceID, int state, int activity, int wordA, int extra, int wordB);
int RPKPTTAudioProc(int deviceID, int kind, unsigned char* audio, int length);
int TrainMessageProc(int sourceID, int deviceID, int message);
int TrainAudioProc(int sourceID, int taskID, unsigned char* audio, int length);
int IntercomMessageProc(int stationID, int intercomID, int message);
int IntercomAudioProc(int stationID, unsigned char* audio, int length);
