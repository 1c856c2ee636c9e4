#include "debug/DataReader.h"
