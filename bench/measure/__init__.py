"""Runs every benchmark and compares the figures with their goals. Started by scripts/bench."""
