// liveries/livery.cpp
#include "liveries/livery.h"

std::list<Livery> Liveries;
