// tests/support/reference_xml.h
// The clear text of a small reference data file, made to measure.
#pragma once

#include <map>
#include <string>

/// Every section by its name, as XML; a test replaces or removes what it is about.
class ReferenceXml {
public:
    ReferenceXml() {
        sections_ = {
            {"aircrafts", R"(<aircraft types="A320,B738,B744,C172,GLF5,H60,F16,A388,EC35"/>)"},
            {"high_performance", R"(<hpf types="F16"/>)"},
            {"heavy", R"(<hvy types="B744,A388"/>)"},
            {"large", R"(<lar types="A320,B738"/>)"},
            {"buzjet", R"(<bzj types="GLF5"/>)"},
            {"rotorcraft", R"(<rot types="H60,EC35"/>)"},
            {"cargo_types", R"(<cargo_type types="B744"/>)"},
            {"ICAO_airlines", R"(<ICAO codes="KLM,DLH"/><ICAO codes="SWR"/>)"},
            {"cargo_operators", R"(<ICAO codes="FDX"/>)"},
            {"simaddonsP3D", R"(<simaddonP3D arpts="EHAM12"/>)"},
        };
    }

    ReferenceXml& with(const std::string& section, const std::string& content) {
        sections_[section] = content;
        return *this;
    }
    ReferenceXml& without(const std::string& section) {
        sections_.erase(section);
        return *this;
    }

    std::string text() const {
        std::string all = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n";
        for (const auto& [name, content] : sections_) {
            all += "<" + name + ">" + content + "</" + name + ">\n";
        }
        return all + "</root>\n";
    }

private:
    std::map<std::string, std::string> sections_;
};
