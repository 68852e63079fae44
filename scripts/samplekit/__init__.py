"""The parts that scripts/make-samples is made of. Python's standard library only."""
