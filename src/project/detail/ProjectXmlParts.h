#pragma once
// The pieces the model builder works with: ids and attribute values as the project writes them,
// and a communication object's layers (program object, its reference, the device's instance),
// each overriding the one below where it says something.
#include <project/ProjectModel.h>
#include <project/detail/Xml.h>

#include <boost/optional.hpp>

#include <string>
#include <unordered_map>

namespace TavProject
{
namespace detail
{
// What one level (program object, its reference, the instance) says about an object; unset
// fields leave the level below in force.
struct ObjectLayer
{
    boost::optional<unsigned> number;
    boost::optional<std::string> name;
    boost::optional<std::string> text;
    boost::optional<std::string> functionText;
    boost::optional<std::string> datapointType;
    boost::optional<bool> flags[6];
};

// A device as the topology lists it, before its program is looked at.
struct DeviceRecord
{
    Device device;
    std::string productRefId;
    std::string hardwareProgramRefId;
    std::string applicationProgramId;
    const XmlNode* instance = nullptr;  // into 0.xml, alive while the model is built
};

struct ProductInfo
{
    std::string text;
    std::string orderNumber;
};

struct ManufacturerHardware
{
    std::unordered_map<std::string, ProductInfo> products;
    std::unordered_map<std::string, std::string> programs;  // Hardware2Program id -> program id
};

// A number attribute: decimal digits only, at most `maximum`; none otherwise.
boost::optional<unsigned> ParseUnsigned(const char* text, unsigned maximum);

// "P-0242-0_GA-1" and "GA-1" name the same group address: links of newer schemas leave out the
// project and installation part.
std::string ShortId(const std::string& id);

// "M-0083" of "M-0083_A-...".
std::string ManufacturerOf(const std::string& id);

// A flag attribute: "Enabled" is set, anything else is not.
bool FlagValue(const char* text);

// What the node itself says about an object.
ObjectLayer LayerOf(const XmlNode& node);

// `above` overrides `below` where it says something.
void Overlay(ObjectLayer& below, const ObjectLayer& above);
} // namespace detail
} // namespace TavProject
