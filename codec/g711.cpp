#include "codec/g711.h" // the object of this file carries the symbols
