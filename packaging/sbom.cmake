# Writes an SPDX 2.3 document about one built library: what it is made of, what it needs, its checksum. With a product's own
# assistant side that is the product's headers, named product/..., and its library.
include(${BUILT_WITH})
file(SHA256 ${LIBRARY} checksum)
file(GLOB_RECURSE sources RELATIVE ${SOURCE} ${SOURCE}/src/* ${SOURCE}/include/*)
set(assistant_checksum)
if(PRODUCT)
  list(FILTER sources EXCLUDE REGEX "^include/DeviceAbstractionLayer/")
  list(APPEND sources ${PRODUCT_HEADERS})
  file(SHA256 ${PRODUCT_LIBRARY} assistant_checksum)
  set(assistant_checksum " \"checksums\": [{\"algorithm\": \"SHA256\", \"checksumValue\": \"${assistant_checksum}\"}],")
endif()
set(files)
set(contains)
foreach(source ${sources})
  get_filename_component(path ${source} ABSOLUTE BASE_DIR ${SOURCE})
  file(SHA1 ${path} sha1)
  file(SHA256 ${path} sha256)
  if(PRODUCT AND IS_ABSOLUTE ${source})
    file(RELATIVE_PATH source ${PRODUCT} ${source})
    string(PREPEND source product/)
  endif()
  string(MAKE_C_IDENTIFIER ${source} id)
  string(REPLACE "_" "-" id ${id})
  list(APPEND files "    {\"SPDXID\": \"SPDXRef-${id}\", \"fileName\": \"./${source}\", \"checksums\": [{\"algorithm\": \"SHA1\", \"checksumValue\": \"${sha1}\"}, {\"algorithm\": \"SHA256\", \"checksumValue\": \"${sha256}\"}], \"licenseConcluded\": \"NOASSERTION\", \"copyrightText\": \"NOASSERTION\"}")
  list(APPEND contains "    {\"spdxElementId\": \"SPDXRef-library\", \"relationshipType\": \"GENERATED_FROM\", \"relatedSpdxElement\": \"SPDXRef-${id}\"}")
endforeach()
list(JOIN files ",\n" files)
list(JOIN contains ",\n" contains)
# The namespace is the content's: the same build gives the same document.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  string(TIMESTAMP created "%Y-%m-%dT%H:%M:%SZ" UTC)
else()
  set(created "1970-01-01T00:00:00Z")
endif()
file(WRITE ${OUTPUT} "{
  \"spdxVersion\": \"SPDX-2.3\",
  \"dataLicense\": \"CC0-1.0\",
  \"SPDXID\": \"SPDXRef-DOCUMENT\",
  \"name\": \"VornDALImpl-${VERSION}-${PROCESSOR}\",
  \"documentNamespace\": \"urn:sha256:${checksum}\",
  \"creationInfo\": {\"created\": \"${created}\", \"creators\": [\"Tool: VornDALImpl build, ${COMPILER}\"]},
  \"packages\": [
    {\"SPDXID\": \"SPDXRef-library\", \"name\": \"libVornDALImpl.so\", \"versionInfo\": \"${VERSION}\", \"downloadLocation\": \"NOASSERTION\", \"filesAnalyzed\": false, \"primaryPackagePurpose\": \"LIBRARY\", \"licenseConcluded\": \"NOASSERTION\", \"licenseDeclared\": \"NOASSERTION\", \"copyrightText\": \"NOASSERTION\", \"checksums\": [{\"algorithm\": \"SHA256\", \"checksumValue\": \"${checksum}\"}]},
    {\"SPDXID\": \"SPDXRef-assistant\", \"name\": \"libDALIMPL.so\", \"downloadLocation\": \"NOASSERTION\", \"filesAnalyzed\": false, \"comment\": \"The assistant side, provided by the product.\",${assistant_checksum} \"licenseConcluded\": \"NOASSERTION\", \"licenseDeclared\": \"NOASSERTION\", \"copyrightText\": \"NOASSERTION\"},
    {\"SPDXID\": \"SPDXRef-standard-library\", \"name\": \"libstdc++.so.6\", \"downloadLocation\": \"NOASSERTION\", \"filesAnalyzed\": false, \"comment\": \"With libgcc_s.so.1 and libc.so.6, provided by the system.\", \"licenseConcluded\": \"NOASSERTION\", \"licenseDeclared\": \"NOASSERTION\", \"copyrightText\": \"NOASSERTION\"}
  ],
  \"files\": [
${files}
  ],
  \"relationships\": [
    {\"spdxElementId\": \"SPDXRef-DOCUMENT\", \"relationshipType\": \"DESCRIBES\", \"relatedSpdxElement\": \"SPDXRef-library\"},
    {\"spdxElementId\": \"SPDXRef-library\", \"relationshipType\": \"DYNAMIC_LINK\", \"relatedSpdxElement\": \"SPDXRef-assistant\"},
    {\"spdxElementId\": \"SPDXRef-library\", \"relationshipType\": \"DYNAMIC_LINK\", \"relatedSpdxElement\": \"SPDXRef-standard-library\"},
${contains}
  ]
}
")
