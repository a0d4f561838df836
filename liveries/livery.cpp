// liveries/livery.cpp
#include "liveries/livery.h"

std::list<Livery> Liveries;

std::vector<LiveryView> viewsOf(const std::list<Livery>& liveries) {
    std::vector<LiveryView> views;
    views.reserve(liveries.size());
    for (const Livery& livery : liveries) {
        views.push_back({livery.airl, livery.type, livery.title, livery.atcid, livery.cargo});
    }
    return views;
}
