// Headers are compiled for a target, and a target has a source.
