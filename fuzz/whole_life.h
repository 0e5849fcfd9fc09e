// A model's life on one road, with neighbours that answer as they should.
#pragma once

#include <string>

#include "life/model_life.h"

namespace fuzz {

// A document that is refused is loaded and no more.
void live(const std::string& document, zant::test::Road road);

}  // namespace fuzz
