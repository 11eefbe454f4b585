// Documents in Prometheus's text exposition format.
#ifndef ZYMDB_DOCUMENTS_DOCUMENT_PROMETHEUS_H
#define ZYMDB_DOCUMENTS_DOCUMENT_PROMETHEUS_H

#include <string>
#include <string_view>
#include <vector>

#include "documents/document.h"

namespace zymdb::documents {

// Every part is a value of the label "part" of its class's metrics, which no other part of that class has. What it
// is, is the labels of zymdb_CLASS_info; what can be counted or measured and numbers that tell its state are metrics
// of their own, in base units; texts that tell its state are info metrics of their own. The types are those of the
// document. Broken UTF-8 becomes U+FFFD.
std::string to_prometheus(const Document& document, const std::vector<RecordType>& types);

// The name of a field's metric within its class, without the class's: "link_speed_bytes_per_second". Nothing for a
// field that is a label of the class's info metric, or left out.
std::string metric_name(const FieldInfo& field);

}  // namespace zymdb::documents

#endif
