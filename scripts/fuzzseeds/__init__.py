"""The parts that scripts/make-fuzz-seeds is made of. Python's standard library only."""
