#pragma once

namespace zant::kor {

// The nearest float, ties to even; what lies beyond the last float is infinite. value: not NaN.
float narrowToFloat(double value) noexcept;

}  // namespace zant::kor
