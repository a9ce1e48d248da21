#include "package/manifest.h"

namespace Plugin::NivexStageletPackageBase {

namespace {

// clang-format off
constexpr char text[] =
R"({
    "Version": "8.1.0",
    "Vendor": "Tessmark",
    "Copyright": "Copyright 2026 Tessmark",
    "License": "Apache License, Version 2.0",
    "Modules": [
        {
            "Name": "Camera",
            "Uuid": "846bca11-6bf2-4895-88c4-fe038f5a659c",
            "ObjectVersion": "7.0.1",
            "MinRequiredSoftwareVersion": "6.0.1",
            "MinRequiredFileVersion": "1.0.0",
            "InterfaceType": "Native",
            "DisplayName": "Camera",
            "Tags": [
                "UseCaseIdentifier=Acquisition",
                "OperationLevelGroup=Low",
                "AlgorithmTypeGroup=Acquisition"
            ],
            "ShortDescription": "Camera Stagelet",
            "DetailedDescription": ")"
#include "package/help/camera.inc"
R"(",
            "SupportedUuids": [
                "846bca11-6bf2-4895-88c4-fe038f5a659c"
            ],
            "HasDynamicInfo": "False"
        },
        {
            "Name": "ImageFormatConverter",
            "Uuid": "4049ea56-3827-4faf-9478-c3ba02e4a0cb",
            "ObjectVersion": "7.0.1",
            "MinRequiredSoftwareVersion": "1.0.0",
            "MinRequiredFileVersion": "1.0.0",
            "InterfaceType": "Native",
            "DisplayName": "Image Format Converter",
            "Tags": [
                "UseCaseIdentifier=Supporters",
                "OperationLevelGroup=Low",
                "AlgorithmTypeGroup=Classical"
            ],
            "ShortDescription": "Image Format Converter Stagelet",
            "DetailedDescription": ")"
#include "package/help/imageformatconverter.inc"
R"(",
            "SupportedUuids": [
                "4049ea56-3827-4faf-9478-c3ba02e4a0cb"
            ],
            "HasDynamicInfo": "False"
        },
        {
            "Name": "DataWriter",
            "Uuid": "726921ef-1686-49fa-9e9c-1e86bd7bf829",
            "ObjectVersion": "1.0.0",
            "MinRequiredSoftwareVersion": "1.0.0",
            "MinRequiredFileVersion": "1.0.0",
            "InterfaceType": "Native",
            "DisplayName": "Data Writer",
            "Tags": [
                "UseCaseIdentifier=Experimental",
                "OperationLevelGroup=Low",
                "AlgorithmTypeGroup=Classical"
            ],
            "ShortDescription": ")"
R"(The Data Writer can be used to write any data, e.g. images to disk. )"
R"(Images can be saved in different formats including MP4 video.)"
R"(",
            "DetailedDescription": ")"
#include "package/help/datawriter.inc"
R"(",
            "SupportedUuids": [
                "726921ef-1686-49fa-9e9c-1e86bd7bf829"
            ],
            "HasDynamicInfo": "False"
        },
        {
            "Name": "ImageLoading",
            "Uuid": "4f2b72dc-294b-4503-885a-6b73d26eb6d7",
            "ObjectVersion": "7.0.1",
            "MinRequiredSoftwareVersion": "1.0.0",
            "MinRequiredFileVersion": "1.0.0",
            "InterfaceType": "Native",
            "DisplayName": "Image Loading",
            "Tags": [
                "UseCaseIdentifier=Acquisition",
                "OperationLevelGroup=Low",
                "AlgorithmTypeGroup=Acquisition"
            ],
            "ShortDescription": "Image Loading Stagelet",
            "DetailedDescription": ")"
#include "package/help/imageloading.inc"
R"(",
            "SupportedUuids": [
                "4f2b72dc-294b-4503-885a-6b73d26eb6d7"
            ],
            "HasDynamicInfo": "False"
        }
    ]
}
)";
// clang-format on

}  // namespace

const char* const manifest = text;

}  // namespace Plugin::NivexStageletPackageBase
