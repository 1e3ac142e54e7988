// The plug-in's C entry points. Replaced by the real ones with the plug-in class.
