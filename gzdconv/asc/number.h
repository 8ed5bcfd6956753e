// Numbers as text, exactly as printf writes them, without printf's cost.
#ifndef GZDCONV_NUMBER_H
#define GZDCONV_NUMBER_H

namespace gzdconv {

// Appends one column to the line buffer: its tab, then `value` with `decimals` (0 and up) and
// options.extra_decimals more. MISSING_DATA prints as missing_string; values of 1e5 and above, with
// decimals, in exponent form; columns are aligned unless options.tabs_only is set.
void print_value(int decimals, double value);

// Appends `value` as printf("%*.*f", width, decimals, value) does; only a NaN never has a sign. A
// negative width aligns left.
void append_fixed(double value, int decimals, int width);

}  // namespace gzdconv

#endif
