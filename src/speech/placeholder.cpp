// The folder's first source.
