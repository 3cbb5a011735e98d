"""Runs every benchmark and sets the figures beside their goals; scripts/bench starts it."""
