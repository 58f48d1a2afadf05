# The upper case of ISO646-ES.
#
# Made by data/toupper/generate.cc: the simple upper case of Unicode, from
# GLib, for the characters that iconv reads as ISO646-ES.
# These stay as they are, since the set does not have their upper case:
# }

TOUPPER CHARSET ISO646-ES

a=A b=B c=C d=D e=E f=F g=G h=H i=I j=J k=K l=L m=M n=N o=O p=P q=Q r=R s=S
t=T u=U v=V w=W x=X y=Y z=Z |=\x5C
