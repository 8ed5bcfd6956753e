// The run over all files of a command line.
#ifndef GZDCONV_PROCESS_H
#define GZDCONV_PROCESS_H

namespace gzdconv {

// The whole program: without arguments banner and usage text, with --help or --version just that,
// else process(). Returns the exit status. Throws what ends the run at once.
int run(int argc, char** argv);

// Reads the options and converts file by file. Returns 0 when every file was converted (or none
// was named), else 1.
int process(int argc, char** argv);

}  // namespace gzdconv

#endif
