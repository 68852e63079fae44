"""The parts of scripts/make-samples. They use only Python's standard library."""
