// Device globals of the interface. Nothing reads or writes them; they stay zero.
#include "NorvaneMXRK7Setup.h"

extern "C" {

int32_t numOfDevices = 0;
int32_t newNumOfDevices = 0;
void *usbDeviceRef[128] = {};

}  // extern "C"
