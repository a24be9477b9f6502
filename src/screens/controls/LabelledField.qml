/// A field with its label above it.
FormField {}
