// What a host sees of the package: a version, a manifest, and for each module a pair of functions.
#include "blobfinder.h"
#include "core/packageentrypoints.h"

namespace {

constexpr char manifest[] = R"({
    "Version": "1.0.0",
    "Vendor": "Stagelet Examples",
    "Copyright": "Copyright 2026 Tessmark",
    "License": "Apache License, Version 2.0",
    "Modules": [
        {
            "Name": "BlobFinder",
            "Uuid": "93ad5cd5-bc85-45a9-b420-678aeace4b2a",
            "ObjectVersion": "1.0.0",
            "MinRequiredSoftwareVersion": "1.0.0",
            "MinRequiredFileVersion": "1.0.0",
            "InterfaceType": "Native",
            "DisplayName": "Blob Finder",
            "Tags": [ "UseCaseIdentifier=Inspection", "OperationLevelGroup=Low", "AlgorithmTypeGroup=Classical" ],
            "ShortDescription": "Finds bright or dark blobs and measures them",
            "DetailedDescription": "<h1>Blob Finder</h1><p>Pixels of at least (or below) a threshold that touch each other make a blob. Gives their centers, bounding boxes and ellipses, and the frame of the largest.</p>",
            "SupportedUuids": [ "93ad5cd5-bc85-45a9-b420-678aeace4b2a" ],
            "HasDynamicInfo": "False"
        }
    ]
}
)";

}  // namespace

extern "C" {

GENICAM_API int get_InterfaceVersion()
{
    return Inspection::Core::Package::interfaceVersion;
}

GENICAM_API char* create_StaticInfo()
{
    return Inspection::Core::Package::copyInfo(manifest);
}

GENICAM_API char* create_DynamicInfo()
{
    return nullptr;
}

GENICAM_API void destroy_Info(char** holder)
{
    Inspection::Core::Package::freeInfo(holder);
}

GENICAM_API Inspection::Core::NodeBase* create_BlobFinder(
    const std::shared_ptr<Inspection::Core::IResourcePool>& pool)
{
    return new Inspection::BlobFinder(pool);
}

GENICAM_API void destroy_BlobFinder(Inspection::Core::NodeBase* node)
{
    delete node;
}

}  // extern "C"
