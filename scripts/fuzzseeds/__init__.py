"""The parts of scripts/make-fuzz-seeds. They use only Python's standard library."""
