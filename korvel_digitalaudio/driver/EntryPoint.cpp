#include "driver/korvel_digitalaudio.h"

extern "C" __attribute__((visibility("default"))) CreationFunc GetCreationFunc();

extern "C" CreationFunc GetCreationFunc() {
    return &korvel_digitalaudio::Create;
}
