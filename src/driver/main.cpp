#include "driver/VorpDriver.h"

int main(int argc, char** argv)
{
    return vorp::vorpMain(argc, argv);
}
