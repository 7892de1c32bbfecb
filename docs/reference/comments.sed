# Makes documentation of the headers' plain comments: a comment belongs to the declaration behind
# it, one at the end of a line to what stands before it. What looks like a tag is none.
s,^( *)// ?(.*)$,\1/// \2,
s,  // (.*)$,  ///< \1,
s,^( *)/\*( .*)?$,\1/**\2,
s,([^ ].*) /\* ,\1 /**< ,
/\/\/\//s,<([A-Za-z]+>),\\<\1,g
