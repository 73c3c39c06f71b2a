#include "app/application.h"

int main(int argc, char** argv) { return updown::RunUpDown(argc, argv); }
