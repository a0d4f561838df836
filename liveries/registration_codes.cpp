// liveries/registration_codes.cpp
#include "liveries/registration_codes.h"

std::vector<std::string> DontUseTitles;

void gf_loadDontUseTitles() {
    DontUseTitles.clear();
}
void gf_processInlineRegcodes() {}
void gf_processOfflineRegcodes() {}

void resetRegistrationCodes() {
    DontUseTitles.clear();
}
