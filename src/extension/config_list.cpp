#include "extension/config_list.h"

namespace zant::kor {

void GraphRecordDeleter::operator()(KORGraphCustomConfig* record) const noexcept {
    if (record->option == KOR_GRAPH_OPTION_FINALIZE) {
        KORGraphCustomConfig::Finalize& finalize = record->values.finalize;
        delete[] finalize.name;
        if (finalize.dataType == KOR_FINALIZE_DATA_TYPE_TEXT) delete[] finalize.value.text;
    }
    delete record;
}

GraphRecord makeGraphRecord(const KORGraphCustomConfig& values) {
    return GraphRecord(new KORGraphCustomConfig(values));
}

}  // namespace zant::kor
